// main.mjs COMMAND [OPTION...]: answers the lines of standard input.
import { createInterface } from "node:readline";
import { Receipts } from "./receipts.mjs";

const receipts = new Receipts(...process.argv.slice(2));
for await (const line of createInterface({ input: process.stdin })) {
  try {
    console.log(JSON.stringify({ blocks: await receipts.render(JSON.parse(line)) }));
  } catch (fault) {
    console.log(`fault: ${fault.message}`);
  }
}
receipts.close();
