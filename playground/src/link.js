// What is on the page as a link's fragment, which browsers keep to themselves, and back.

const PREFIX = '#r=';
const MOST_CHARACTERS = 4_000_000; // of what a link may unfold to

async function through(stream, bytes, most) {
  const writer = stream.writable.getWriter();
  const written = writer.write(bytes).then(() => writer.close());
  written.catch(() => {}); // told by reading
  const reader = stream.readable.getReader();
  const parts = [];
  let size = 0;
  for (;;) {
    const { done, value } = await reader.read();
    if (done) break;
    size += value.length;
    if (size > most) {
      await reader.cancel();
      throw new Error('the link holds too much');
    }
    parts.push(value);
  }
  const all = new Uint8Array(size);
  let at = 0;
  for (const part of parts) {
    all.set(part, at);
    at += part.length;
  }
  return all;
}

function toBase64Url(bytes) {
  let binary = '';
  for (let at = 0; at < bytes.length; at += 0x8000) binary += String.fromCharCode(...bytes.subarray(at, at + 0x8000));
  return btoa(binary).replaceAll('+', '-').replaceAll('/', '_').replace(/=+$/, '');
}

export function fromBase64(text) {
  return Uint8Array.from(atob(text), (character) => character.charCodeAt(0));
}

export async function toFragment(state) {
  const bytes = new TextEncoder().encode(JSON.stringify(state));
  return PREFIX + toBase64Url(await through(new CompressionStream('deflate-raw'), bytes, Infinity));
}

// Null for a fragment that is no link of this kind. Throws when it is one and broken.
export async function fromFragment(fragment) {
  if (!fragment.startsWith(PREFIX)) return null;
  try {
    const packed = fromBase64(fragment.slice(PREFIX.length).replaceAll('-', '+').replaceAll('_', '/'));
    const bytes = await through(new DecompressionStream('deflate-raw'), packed, MOST_CHARACTERS);
    const state = JSON.parse(new TextDecoder('utf-8', { fatal: true }).decode(bytes));
    if (typeof state?.text !== 'string') throw new Error('no record');
    return state;
  } catch (fault) {
    throw new Error('This link is damaged: it does not hold a record.', { cause: fault });
  }
}
