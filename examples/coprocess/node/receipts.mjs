import { spawn } from "node:child_process";

/** Receipts from `qelrcpt --batch`, which stays open beside this program until it is closed. */
export class Receipts {
  #command;
  #process; // undefined: none is running
  #waiting = []; // requests, in the order of their lines

  constructor(...command) { this.#command = command; }

  /** The blocks of a record. Any number of records may be on their way. */
  render(record) {
    return new Promise((resolve, reject) =>
      this.#send({ line: JSON.stringify(record) + "\n", resolve, reject }));
  }

  close() { this.#process?.stdin.end(); }

  #send(request) {
    this.#process ??= this.#start();
    this.#waiting.push(request);
    this.#process.stdin.write(request.line);
  }

  #start() {
    const [name, ...options] = this.#command;
    const process = spawn(name, options, { stdio: ["pipe", "pipe", "inherit"] });
    let text = "";
    process.stdout.setEncoding("utf8").on("data", (part) => {
      const lines = (text + part).split("\n");
      text = lines.pop();
      for (const { error, blocks } of lines.map((line) => JSON.parse(line))) {
        const { resolve, reject } = this.#waiting.shift();
        error === undefined ? resolve(blocks) : reject(new Error(error));
      }
    });
    process.stdin.on("error", () => {}); // "close" follows, after all that it has written
    return process.on("error", () => {}).on("close", () => this.#sendAgain());
  }

  #sendAgain() { // to a new one; where it has been asked twice, the first record may be why
    const requests = this.#waiting.splice(0);
    this.#process = undefined;
    if (requests[0]?.isAgain) requests.shift().reject(new Error("qelrcpt has died"));
    requests.forEach((request, place) => this.#send({ ...request, isAgain: place === 0 }));
  }
}
