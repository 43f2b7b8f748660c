<?php

/** Receipts from `qelrcpt --batch`, which stays open beside this program. */
final class Receipts
{
    private $process = null; // none is running
    private array $pipes = [];
    private int $line = 0; // of the process, the last one written

    public function __construct(private array $command) {}

    /** The blocks of a record, in the receipt's order. */
    public function render(array $record): array
    {
        $line = json_encode((object) $record, JSON_THROW_ON_ERROR | JSON_UNESCAPED_UNICODE);
        $answer = $this->ask($line) ?? $this->ask($line); // of a new one
        if ($answer === null)
            throw new RuntimeException('qelrcpt has died'); // the record may be why
        $answer = json_decode($answer, true, 512, JSON_THROW_ON_ERROR);
        if (isset($answer['error']))
            throw new InvalidArgumentException($answer['error']);
        return $answer['blocks'];
    }

    /** Kills the command. The next record starts another. */
    public function close(): void
    {
        if ($this->process === null)
            return;
        proc_terminate($this->process, 9);
        array_map('fclose', $this->pipes);
        proc_close($this->process);
        $this->process = null;
    }

    private function ask(string $line): ?string
    {
        $isAnswered = false;
        try {
            if ($this->process === null)
                $this->start();
            $begin = '{"line": ' . ++$this->line . ',';
            @fwrite($this->pipes[0], "$line\n"); // where this fails, so does the next
            $answer = (string) fgets($this->pipes[1]);
            $isAnswered = str_starts_with($answer, $begin) && str_ends_with($answer, "\n"); // half a line is none
            return $isAnswered ? $answer : null;
        } finally { // whatever ends it early: what is left unread must not answer the next record
            if (!$isAnswered)
                $this->close();
        }
    }

    private function start(): void
    {
        $this->process = @proc_open($this->command, [['pipe', 'r'], ['pipe', 'w']], $this->pipes)
            ?: throw new RuntimeException("{$this->command[0]} cannot be started");
        $this->line = 0;
    }
}
