module receipts

go 1.19
