package main

import (
	"bufio"
	"context"
	"errors"
	"fmt"
	"io"
	"os"
	"os/exec"
	"strings"
	"sync"
)

// Receipts come from `qelrcpt --batch`, which stays open beside this program.
type Receipts struct {
	command []string
	context context.Context // done: closed
	cancel  context.CancelFunc
	mutex   sync.Mutex
	process *exec.Cmd // nil: none is running
	in      io.Writer
	out     *bufio.Reader
	line    int // of the process, the last one written
}

func New(command ...string) *Receipts {
	ctx, cancel := context.WithCancel(context.Background())
	return &Receipts{command: command, context: ctx, cancel: cancel}
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

// Close kills the command, for good. A record that waits for its answer, as after a timeout, fails.
func (r *Receipts) Close() {
	r.cancel()
	r.mutex.Lock()
	defer r.mutex.Unlock()
	r.end()
}

func (r *Receipts) ask(record string) (answer string, err error) {
	if r.process == nil {
		err = r.start()
	}
	if err == nil {
		r.line++
		io.WriteString(r.in, record+"\n")    // where this fails, so does the next
		answer, err = r.out.ReadString('\n') // and so it does for half a line
	}
	if err == nil && !strings.HasPrefix(answer, fmt.Sprintf(`{"line": %d,`, r.line)) {
		err = fmt.Errorf("expected line %d: %s", r.line, answer)
	}
	if err != nil {
		r.end()
	}
	return answer, err
}

func (r *Receipts) start() error {
	process := exec.CommandContext(r.context, r.command[0], r.command[1:]...)
	in, inErr := process.StdinPipe()
	out, outErr := process.StdoutPipe()
	if inErr != nil || outErr != nil {
		return errors.New("no descriptors are left")
	}
	process.Stderr = os.Stderr
	err := process.Start()
	if err == nil {
		r.process, r.in, r.out, r.line = process, in, bufio.NewReader(out), 0
	}
	return err
}

func (r *Receipts) end() {
	if r.process != nil {
		r.process.Process.Kill()
		r.process.Wait()
		r.process = nil
	}
}
