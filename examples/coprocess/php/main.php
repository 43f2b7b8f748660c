<?php
// main.php COMMAND [OPTION...]: answers the lines of standard input.

require __DIR__ . '/receipts.php';

$receipts = new Receipts(array_slice($argv, 1));
while (($line = fgets(STDIN)) !== false) {
    try {
        echo json_encode(['blocks' => $receipts->render(json_decode($line, true, 512, JSON_THROW_ON_ERROR))]), "\n";
    } catch (InvalidArgumentException | RuntimeException | JsonException $fault) {
        echo 'fault: ', $fault->getMessage(), "\n";
    }
}
$receipts->close();
