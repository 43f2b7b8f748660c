// Colours for lines of markup and data that the library wrote: pieces of text, each with the class of its
// kind or none. Put together they are the line again.

const JSON_PIECES = /("(?:[^"\\]|\\.)*")(\s*:)?|(-?\d[\d.]*|true|false|null)|([{}[\],])/g;
const XML_PIECES = /(<[?/]?[^<>]*>)|(&[^;<>]*;)/g;

function* pieces(text, pattern, kindOf) {
  const between = pattern === XML_PIECES ? 'string' : '';
  let end = 0;
  for (const match of text.matchAll(pattern)) {
    if (match.index > end) yield [text.slice(end, match.index), between];
    yield* kindOf(match);
    end = match.index + match[0].length;
  }
  if (end < text.length) yield [text.slice(end), between];
}

function* jsonKinds([, text, colon, word, mark]) {
  if (text !== undefined) {
    yield [text, colon === undefined ? 'string' : 'key'];
    if (colon !== undefined) yield [colon, 'mark'];
  } else if (word !== undefined) yield [word, 'number'];
  else yield [mark, 'mark'];
}

function* xmlKinds([, tag, entity]) {
  if (entity !== undefined) yield [entity, 'number'];
  else {
    const [, opening, name, closing] = /^(<[?/]?)([\s\S]*?)([?/]?>)$/.exec(tag);
    yield [opening, 'mark'];
    yield [name, 'key'];
    yield [closing, 'mark'];
  }
}

// The line as nodes.
export function coloured(text, language) {
  const found = language === 'json' ? pieces(text, JSON_PIECES, jsonKinds) : pieces(text, XML_PIECES, xmlKinds);
  const fragment = document.createDocumentFragment();
  for (const [piece, kind] of found) {
    if (!kind || piece.trim() === '') {
      fragment.append(piece);
      continue;
    }
    const span = document.createElement('span');
    span.className = kind;
    span.textContent = piece;
    fragment.append(span);
  }
  return fragment;
}
