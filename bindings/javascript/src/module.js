// The library's module: loading it, and calling it.

import { offsetOf } from './zones.js';

const UNKNOWN_ZONE = -0x80000000;
const BROKEN_REQUEST = 0xffffffff;
const SUCCESS = 0; // of WASI's calls
const NOT_SUPPORTED = 58;
const REALTIME = 0; // of WASI's clocks
const SHORT = 16 * 1024; // of a request, in UTF-16 units
const PIECE = 1024; // of a text, in bytes
const USUAL_MEMORY = 32 * 1024 * 1024;

const encoder = new TextEncoder();
const decoder = new TextDecoder('utf-8', { ignoreBOM: true });

let compiled; // the module, once it is loaded
let loading; // the promise of it
let instance; // made anew where a receipt ended the last one or made it large

// What a module of a command line expects of its system. Nothing here reaches files.
function system(memory, random) {
  const view = () => new DataView(memory().buffer);
  return {
    clock_time_get(clock, precision, at) {
      const now = clock === REALTIME ? Date.now() : performance.now();
      view().setBigUint64(at >>> 0, BigInt(Math.round(now * 1e6)), true);
      return SUCCESS;
    },
    random_get(at, size) {
      if (random === undefined) return NOT_SUPPORTED;
      random.getRandomValues(new Uint8Array(memory().buffer, at >>> 0, size >>> 0));
      return SUCCESS;
    },
  };
}

class Instance {
  constructor(module, random) {
    const memory = () => this.exports.memory;
    const imports = {
      wasi_snapshot_preview1: system(memory, random),
      // It asks for the zone of its request and no other.
      qelstdlib: { time_offset: (name, time) => offsetOf(this.zone, time) ?? UNKNOWN_ZONE },
    };
    this.exports = new WebAssembly.Instance(module, imports).exports;
    this.exports._initialize();
    this.take();
  }

  // Views of the memory, which are void as soon as it has grown.
  take() {
    const { buffer } = this.exports.memory;
    this.bytes = new Uint8Array(buffer);
    this.numbers = new Uint32Array(buffer, this.exports.settings() >>> 0);
  }

  get memory() {
    if (this.bytes.length === 0) this.take();
    return this.bytes;
  }

  textAt(at) {
    const begin = at >>> 0;
    return decoder.decode(this.memory.subarray(begin, this.memory.indexOf(0, begin)));
  }

  write(text) {
    if (text.length > SHORT) {
      const bytes = encoder.encode(text);
      const at = this.exports.request(bytes.length) >>> 0;
      this.memory.set(bytes, at);
      return;
    }
    const at = this.exports.request(text.length * 3) >>> 0;
    const { written } = encoder.encodeInto(text, this.memory.subarray(at));
    this.exports.request(written);
  }

  call(operation, { settings, zone, request, read }) {
    const length = this.answer(operation, settings, zone, request);
    if (length === BROKEN_REQUEST) return undefined;
    try {
      const at = this.exports.result() >>> 0;
      return read(this.memory.subarray(at, at + length), this);
    } finally {
      this.exports.release();
    }
  }

  // Whatever ends it early leaves the module in the middle of something, never to be called again.
  answer(operation, settings, zone, request) {
    try {
      this.zone = zone;
      this.write(request);
      if (this.bytes.length === 0) this.take();
      this.numbers.set(settings);
      return this.exports[operation]() >>> 0;
    } catch (fault) {
      instance = undefined;
      if (fault instanceof WebAssembly.RuntimeError)
        throw new RangeError('the receipt needs more memory than there is', { cause: fault });
      throw fault;
    }
  }
}

function live() {
  if (compiled === undefined) throw new Error('qelrcpt is not loaded, expected "await load()" before');
  instance ??= new Instance(compiled.module, compiled.random);
  return instance;
}

// Calls an operation of the module with
//   settings  numbers, the first of which is how many texts there are in the request
//   zone      the time zone, or ""
//   request   the texts, each with a NUL at its end
//   read      which is given the bytes of the result and the module, and makes the result of it
// Undefined when the request has another number of NULs.
export function call(operation, given) {
  const called = live();
  try {
    return called.call(operation, given);
  } finally {
    if (called.memory.length > USUAL_MEMORY) instance = undefined;
  }
}

// Engines are slow behind the first character beyond ASCII, so a text is decoded in pieces, which end
// where a character does.
function decodeText(bytes) {
  let text = '';
  for (let at = 0, end = 0; at < bytes.length; at = end) {
    end = Math.min(at + PIECE, bytes.length);
    while (end < bytes.length && (bytes[end] & 0xc0) === 0x80) ++end;
    text += decoder.decode(bytes.subarray(at, end));
  }
  return text;
}

// The texts of a result, each of which ends with a NUL.
export function textsOf(bytes, { exports }) {
  if (exports.result_is_ascii() === 1) {
    const texts = decoder.decode(bytes).split('\0');
    texts.pop();
    return texts;
  }
  const texts = [];
  for (let at = 0, end = 0; at < bytes.length; at = end + 1) {
    end = at + exports.text_length(at);
    texts.push(decodeText(bytes.subarray(at, end)));
  }
  return texts;
}

async function compile(source) {
  const given = await source;
  if (given instanceof WebAssembly.Module) return given;
  if (given instanceof ArrayBuffer || ArrayBuffer.isView(given)) return WebAssembly.compile(given);
  const isResponse = typeof Response === 'function' && given instanceof Response;
  const response = isResponse ? given : await fetch(given);
  if (!response.ok) throw new Error(`qelrcpt.wasm: ${response.url}: status ${response.status}`);
  return WebAssembly.compile(await response.arrayBuffer());
}

// Loads the module from where it is, once; after a failure it can be tried again.
export function load(source, random) {
  loading ??= compile(source())
    .then((module) => {
      instance = new Instance(module, random); // which fails for a module that is another's
      compiled = { module, random };
    })
    .catch((fault) => {
      loading = undefined;
      throw fault;
    });
  return loading;
}
