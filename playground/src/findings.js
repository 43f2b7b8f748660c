// What is wrong with the record: in the editor beside its line, and as a list.
import { element } from './dom.js';
import { placeInValue } from './read_record.js';

const ORDER = ['error', 'warning', 'note'];

// What the editor calls them.
const SEVERITIES = { error: 'error', warning: 'warning', note: 'info' };

const rank = ({ severity }) => ORDER.indexOf(severity);

export const worstFirst = (findings) => findings.toSorted((a, b) => rank(a) - rank(b));

// Findings of the check with their places in the text: at the character, or the key with its value; what
// the record lacks stands at its beginning.
export function located(findings, text, { members, begin }) {
  return findings.map((finding) => {
    const member = members.findLast(({ key }) => key === finding.key);
    if (!member) return { ...finding, isMissing: true, from: begin, to: begin + 1 };
    if (finding.index === undefined) return { ...finding, from: member.from, to: lineEnd(text, member) };
    const from = placeInValue(text, member, finding.index);
    return { ...finding, from, to: from + 1 };
  });
}

function lineEnd(text, { from, value }) {
  const end = text.indexOf('\n', from);
  return end < 0 ? value.to : Math.min(end, value.to);
}

// The members whose key stands there already.
export function repeated({ members }) {
  const seen = new Set();
  return members.filter(({ key }) => seen.size === seen.add(key).size).map(({ key }) => ({
    severity: 'warning', rule: 'repeated-key', key, message: 'the record has this key again; the later value counts' }));
}

const sentence = (text) => `${text.slice(0, 1).toUpperCase()}${text.slice(1)}`;

export function diagnosticsOf(findings) {
  return findings.map(({ from, to, severity, message, key, rule, source, isMissing }) => ({
    from,
    to,
    severity: SEVERITIES[severity],
    message: isMissing && key ? `${key}: ${message}` : sentence(message),
    source: [rule, source].filter(Boolean).join('; '),
  }));
}

function count(findings, severity) {
  const number = findings.filter((finding) => finding.severity === severity).length;
  return number === 0 ? '' : `${number} ${severity}${number === 1 ? '' : 's'}`;
}

export class Findings {
  constructor({ list, totals, badge, show, lineAt }) {
    Object.assign(this, { list, totals, badge, showPlace: show, lineAt });
  }

  // Worst first, then as they stand in the text; how many more there are is told.
  show(findings, more = 0) {
    const sorted = findings.toSorted((a, b) =>
      rank(a) - rank(b) || Boolean(a.isMissing) - Boolean(b.isMissing) || a.from - b.from);
    const rows = sorted.map((finding) => ({ finding, place: this.placeOf(finding) }));
    const seen = JSON.stringify([rows, more]);
    if (seen === this.seen) return;
    this.seen = seen;
    this.list.replaceChildren(...rows.map((row) => this.item(row)));
    if (more > 0) this.list.append(element('li', { className: 'more' }, `${more} more are not shown.`));
    const counts = ORDER.map((severity) => [severity, count(findings, severity)]).filter(([, text]) => text !== '');
    this.totals.replaceChildren(...(counts.length === 0 ? ['The check finds nothing wrong.'] : counts.map(([severity, text]) => {
      const total = element('span', {}, text);
      total.dataset.severity = severity;
      return total;
    })));
    const errors = findings.filter(({ severity }) => severity === 'error').length;
    this.badge.textContent = errors === 0 ? '' : String(errors);
    this.badge.setAttribute('aria-label', errors === 0 ? '' : `${errors} errors`);
  }

  placeOf({ isMissing, key, from }) {
    if (isMissing) return key ? 'missing' : 'record';
    return `line ${this.lineAt(from)}`;
  }

  item({ finding, place }) {
    const { severity, message, key, rule, source, date } = finding;
    const dot = element('span', { className: 'dot', role: 'img', 'aria-label': severity });
    const where = [key, rule, source && `${source}${date ? `, ${date}` : ''}`].filter(Boolean).join(' · ');
    const button = element('button', { type: 'button', onclick: () => this.showPlace(finding) },
      dot, element('span', { className: 'place' }, place), element('span', {}, sentence(message)),
      ...(where ? [element('span', { className: 'source' }, where)] : []));
    button.dataset.severity = severity;
    return element('li', {}, button);
  }
}
