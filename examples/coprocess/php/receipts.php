<?php

/** Receipts from `qelrcpt --batch`, which stays open beside this program. */
final class Receipts
{
    private $process = null; // none is running
    private array $pipes = [];

    public function __construct(private array $command) {}

    /** The answer to a record, with its blocks in the receipt's order. */
    public function render(array $record): array
    {
        $line = json_encode((object) $record, JSON_THROW_ON_ERROR | JSON_UNESCAPED_UNICODE);
        $answer = json_decode($this->ask($line, true), true, 512, JSON_THROW_ON_ERROR);
        if (isset($answer['error']))
            throw new InvalidArgumentException($answer['error']);
        return $answer['blocks'];
    }

    private function ask(string $line, bool $mayAskAgain): string
    {
        $this->process ??= @proc_open($this->command, [['pipe', 'r'], ['pipe', 'w']], $this->pipes)
            ?: throw new RuntimeException("{$this->command[0]} cannot be started");
        @fwrite($this->pipes[0], "$line\n"); // where this fails, so does the next
        $answer = fgets($this->pipes[1]);
        if ($answer !== false && str_ends_with($answer, "\n"))
            return $answer;
        array_map('fclose', $this->pipes); // it has died; half a line is none
        proc_close($this->process);
        $this->process = null;
        if (!$mayAskAgain)
            throw new RuntimeException('qelrcpt has died'); // the record may be why
        return $this->ask($line, false);
    }
}
