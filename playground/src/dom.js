// Elements in one expression: element('p', { className: 'a' }, 'text', ...). Properties are set as such,
// those with a dash as attributes.
export function element(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key.includes('-') || key === 'role' || key === 'for') made.setAttribute(key, value);
    else made[key] = value;
  }
  made.append(...children);
  return made;
}

export function icon(name) {
  const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
  svg.setAttribute('aria-hidden', 'true');
  const use = document.createElementNS('http://www.w3.org/2000/svg', 'use');
  use.setAttribute('href', `#icon-${name}`);
  svg.append(use);
  return svg;
}

export const byId = (id) => document.getElementById(id);
