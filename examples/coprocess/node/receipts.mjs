import { spawn } from "node:child_process";

/** Receipts from `qelrcpt --batch`, which stays open beside this program until it is closed. */
export class Receipts {
  #command;
  #process; // undefined: none is running
  #line; // of the process, the last one written
  #waiting = []; // requests, in the order of their lines

  constructor(...command) { this.#command = command; }

  /** The blocks of a record. Any number of records may be on their way. */
  render(record) {
    return new Promise((resolve, reject) =>
      this.#send({ text: JSON.stringify(record) + "\n", resolve, reject }));
  }

  close() { this.#process?.stdin.end(); }

  /** Kills the command, as after a timeout. What waits for its answer is sent to another one. */
  kill() { this.#process?.kill("SIGKILL"); }

  #send(request) {
    this.#process ??= this.#start();
    this.#waiting.push({ ...request, begin: `{"line": ${++this.#line},` });
    this.#process.stdin.write(request.text);
  }

  #start() {
    const [name, ...options] = this.#command;
    const process = spawn(name, options, { stdio: ["pipe", "pipe", "inherit"] });
    process.on("error", () => {});
    if (!process.stdout) throw new Error(`${name} cannot be started`); // no descriptors are left
    process.on("close", () => this.#sendAgain()); // after all that it has written
    process.stdin.on("error", () => {}); // "close" follows
    let parts = []; // of a line
    process.stdout.setEncoding("utf8").on("data", (text) => {
      const [end, ...begins] = text.split("\n");
      parts.push(end);
      for (const begin of begins) {
        this.#take(parts.join(""));
        parts = [begin];
      }
    });
    this.#line = 0;
    return process;
  }

  #take(answer) {
    if (!answer.startsWith(this.#waiting[0]?.begin)) return this.kill(); // it answers another line
    const { resolve, reject } = this.#waiting.shift();
    const { error, blocks } = JSON.parse(answer);
    error === undefined ? resolve(blocks) : reject(new Error(error));
  }

  #sendAgain() { // to a new one; where it has been asked twice, the first record may be why
    const requests = this.#waiting.splice(0);
    this.#process = undefined;
    if (requests[0]?.isAgain) requests.shift().reject(new Error("qelrcpt has died"));
    requests.forEach((request, place) => {
      try {
        this.#send({ ...request, isAgain: place === 0 });
      } catch (fault) {
        request.reject(fault);
      }
    });
  }
}
