// The keys of a record: offered where one is typed, explained where one stands.
import { syntaxTree } from '@codemirror/language';
import { hoverTooltip } from '@codemirror/view';
import keys from 'record-keys';
import { element } from './dom.js';

const KNOWN = new Map(keys.map((key) => [key.name, key]));
const WRITTEN_AS = { json: '[$]', amount: '"$"', number: '"$"' }; // of a value

// In Markdown, of which only backquotes and links are used.
const plain = (text) => text.replaceAll('`', '').replace(/\[([^\]]*)\]\([^)]*\)/g, '$1');

function explanation({ meaning, detail, example }) {
  const sentence = `${meaning.slice(0, 1).toUpperCase()}${meaning.slice(1)}`;
  return element('div', { className: 'cm-key' },
    element('div', {}, plain([sentence.replace(/\.?$/, '.'), detail].filter(Boolean).join(' '))),
    ...(example ? [element('div', { className: 'cm-diagnosticSource' }, `Such as ${example}`)] : []));
}

// How many objects and arrays a place stands in.
function depthAt(state, place) {
  let depth = 0;
  for (let node = syntaxTree(state).resolveInner(place, -1); node; node = node.parent)
    if (node.name === 'Object' || node.name === 'Array') depth++;
  return depth;
}

function isInRecord(state, place) {
  const depth = depthAt(state, place);
  return depth === 1 || (depth === 2 && /^\s*\{\s*"(?:record|config)"\s*:/.test(state.sliceDoc(0, 200)));
}

// Puts the key in, and behind a new one the colon and room for its value.
function apply(view, { label, kind }, from, to) {
  const { state } = view;
  const end = state.sliceDoc(to, to + 1) === '"' ? to + 1 : to;
  const isNew = !/^\s*:/.test(state.sliceDoc(end, end + 20));
  const [before, after] = isNew ? (WRITTEN_AS[kind] ?? '"$"').split('$') : ['', ''];
  const next = isNew ? `: ${before}${after}` : '';
  const comma = isNew && /^\s*"/.test(state.sliceDoc(end)) ? ',' : '';
  view.dispatch({
    changes: { from, to: end, insert: `${label}"${next}${comma}` },
    selection: { anchor: from + label.length + 1 + (isNew ? 2 + before.length : 0) },
    userEvent: 'input.complete',
  });
}

const OFFERED = keys.map((key) => ({
  label: key.name,
  kind: key.kind,
  detail: plain(key.meaning).length > 44 ? `${plain(key.meaning).slice(0, 42)}…` : plain(key.meaning),
  info: () => explanation(key),
  apply,
}));

export function completeKeys(context) {
  const word = context.matchBefore(/"\w*/);
  if (!word || !isInRecord(context.state, word.from)) return null;
  const before = context.state.sliceDoc(0, word.from).trimEnd().at(-1);
  if (before !== '{' && before !== ',') return null;
  return { from: word.from + 1, options: OFFERED, validFor: /^\w*$/ };
}

export const explainKeys = hoverTooltip((view, place) => {
  const node = syntaxTree(view.state).resolveInner(place, 1);
  if (node.name !== 'PropertyName') return null;
  const key = KNOWN.get(view.state.sliceDoc(node.from + 1, node.to - 1));
  if (!key || !isInRecord(view.state, node.from)) return null;
  return { pos: node.from, end: node.to, above: true, create: () => ({ dom: explanation(key) }) };
});
