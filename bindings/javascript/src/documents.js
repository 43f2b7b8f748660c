// Receipts as one text, as the command qelrcpt writes them.

// "- - - -": as wide as the receipt and the same from both ends.
function cutLine(width) {
  const half = '- '.repeat(Math.ceil(width / 4)).slice(0, Math.ceil(width / 2));
  const mirrored = [...half].reverse().join('');
  return half + mirrored.slice(mirrored.length - Math.floor(width / 2));
}

function joinedBlocks(copy, from, to) {
  const text = copy.blocks.map((block) => block.text).join(`${from}${from}`);
  return from === to ? text : text.replaceAll(from, to);
}

function joinedCopies(copies, divider, { blockLineBreak, lineBreak }) {
  const texts = copies.map((copy) => joinedBlocks(copy, blockLineBreak, lineBreak) + lineBreak);
  return texts.join(`${lineBreak}${divider}${lineBreak}${lineBreak}`);
}

function xml(copies, { lineBreak }) {
  const elements = copies.map(
    (copy) => `<${copy.name}>\n${joinedBlocks(copy, '\n', '\n')}\n</${copy.name}>\n`,
  );
  const text = `<?xml version="1.0" encoding="UTF-8"?>\n<receipt>\n${elements.join('')}</receipt>\n`;
  return text.replaceAll('\n', lineBreak);
}

function members(texts) {
  return texts.length === 0 ? '{}' : `{\n${texts.join(',\n')}\n}`;
}

function json(copies, { lineBreak }) {
  const objects = copies.map((copy) => {
    const blocks = copy.blocks.map((block) => `"${block.name}": ${block.text}`);
    return `"${copy.name}": ${members(blocks)}`;
  });
  return `${members(objects)}\n`.replaceAll('\n', lineBreak);
}

// The document of the copies that have blocks.
export function documentOf(copies, layout) {
  const shown = copies.filter((copy) => copy !== undefined);
  if (layout.form === 'xml') return xml(shown, layout);
  if (layout.form === 'json') return json(shown, layout);
  const divider = layout.isText ? cutLine(layout.width) : '<hr class="rcpt_cut">';
  return joinedCopies(shown, divider, layout);
}

