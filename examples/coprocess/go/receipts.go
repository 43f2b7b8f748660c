package main

import (
	"bufio"
	"errors"
	"io"
	"os"
	"os/exec"
	"strings"
	"sync"
)

// Receipts come from `qelrcpt --batch`, which stays open beside this program.
type Receipts struct {
	Command []string
	mutex   sync.Mutex
	process *exec.Cmd // nil: none is running
	in      io.Writer
	out     *bufio.Reader
}

// Render gives the answer to a record, both one line of JSON. Any goroutine may call it.
func (r *Receipts) Render(record string) (answer string, err error) {
	r.mutex.Lock()
	defer r.mutex.Unlock()
	if !strings.HasPrefix(record, "{") || strings.Contains(record, "\n") {
		err = errors.New("expected a record in one line")
	} else if answer, err = r.ask(record); err != nil {
		answer, err = r.ask(record) // of a new one; when that dies too, the record may be why
	}
	if _, rest, _ := strings.Cut(answer, ","); strings.HasPrefix(rest, ` "error": `) {
		err = errors.New(answer)
	}
	return answer, err
}

func (r *Receipts) ask(record string) (answer string, err error) {
	if r.process == nil {
		r.process = exec.Command(r.Command[0], r.Command[1:]...)
		r.in, _ = r.process.StdinPipe()
		out, _ := r.process.StdoutPipe()
		r.out, r.process.Stderr = bufio.NewReader(out), os.Stderr
		err = r.process.Start()
	}
	if err == nil {
		io.WriteString(r.in, record+"\n")    // where this fails, so does the next
		answer, err = r.out.ReadString('\n') // and so it does for half a line
	}
	if err != nil {
		r.process.Wait()
		r.process = nil
	}
	return answer, err
}
