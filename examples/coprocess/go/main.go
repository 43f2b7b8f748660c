// main COMMAND [OPTION...]: answers the lines of standard input.
package main

import (
	"bufio"
	"fmt"
	"os"
	"strings"
)

func main() {
	receipts := New(os.Args[1:]...)
	defer receipts.Close()
	in := bufio.NewReader(os.Stdin)
	for {
		line, err := in.ReadString('\n')
		if err != nil {
			return
		}
		answer, err := receipts.Render(strings.TrimSuffix(line, "\n"))
		if err != nil {
			answer = "fault: " + strings.TrimSpace(err.Error()) + "\n"
		}
		fmt.Print(answer)
	}
}
