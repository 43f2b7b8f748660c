// The receipt's HTML as elements. Nothing but what the library writes gets in: plain elements with an id
// and classes.
const ELEMENTS = new Set(['DIV', 'SPAN']);
const ATTRIBUTES = new Set(['id', 'class']);

const policy = globalThis.trustedTypes?.createPolicy('receipt', { createHTML: (markup) => markup });

function copyOf(node) {
  if (node.nodeType === Node.TEXT_NODE) return node.data;
  if (node.nodeType !== Node.ELEMENT_NODE) return '';
  if (!ELEMENTS.has(node.tagName)) return node.textContent;
  const made = document.createElement(node.tagName);
  for (const { name, value } of node.attributes) if (ATTRIBUTES.has(name)) made.setAttribute(name, value);
  made.append(...Array.from(node.childNodes, copyOf));
  return made;
}

// Of a block, which is one element.
export function elementOf(markup) {
  const parsed = new DOMParser().parseFromString(policy ? policy.createHTML(markup) : markup, 'text/html');
  return copyOf(parsed.body.firstElementChild);
}
