// The library's module: loading it, and calling it.

import { offsetOf } from './zones.js';

const UNKNOWN_ZONE = -0x80000000;
const BROKEN_REQUEST = 0xffffffff;
const SUCCESS = 0; // of WASI's calls
const NOT_SUPPORTED = 58;
const REALTIME = 0; // of WASI's clocks
const SHORT = 16 * 1024; // of a request, in UTF-16 units
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
      qelstdlib: { time_offset: (name, time) => offsetOf(this.textAt(name), time) ?? UNKNOWN_ZONE },
    };
    this.exports = new WebAssembly.Instance(module, imports).exports;
    this.exports._initialize();
    this.settingsAt = this.exports.settings() >>> 0;
    this.take();
  }

  // Views of the memory, which are void as soon as it has grown.
  take() {
    this.bytes = new Uint8Array(this.exports.memory.buffer);
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

  call(operation, settings, request, read) {
    this.write(request);
    new Uint32Array(this.memory.buffer, this.settingsAt, settings.length).set(settings);
    const length = this.exports[operation]() >>> 0;
    if (length === BROKEN_REQUEST) return undefined;
    const at = this.exports.result() >>> 0;
    const result = read(this.memory.subarray(at, at + length), this);
    this.exports.release();
    return result;
  }
}

function live() {
  if (compiled === undefined) throw new Error('qelrcpt is not loaded, expected "await load()" before');
  instance ??= new Instance(compiled.module, compiled.random);
  return instance;
}

// Runs an operation of the module on the texts of a request, of which the first of the settings is the
// number and each of which ends with a NUL, and gives what read makes of the bytes of its result;
// undefined when there are more NULs than that.
export function call(operation, settings, request, read) {
  const called = live();
  try {
    const result = called.call(operation, settings, request, read);
    if (called.memory.length > USUAL_MEMORY) instance = undefined;
    return result;
  } catch (fault) {
    instance = undefined; // nobody knows what it was in the middle of
    if (fault instanceof WebAssembly.RuntimeError)
      throw new RangeError('the receipt needs more memory than there is', { cause: fault });
    throw fault;
  }
}

export function decode(bytes) {
  return decoder.decode(bytes);
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
  loading ??= compile(source()).then(
    (module) => {
      compiled = { module, random };
      instance = new Instance(module, random);
    },
    (fault) => {
      loading = undefined;
      throw fault;
    },
  );
  return loading;
}
