// The width of the paper: an edge to drag on each copy, a slider, and the keys of either.
import { element, icon } from './dom.js';

export const LEAST = 10;
export const MOST = 80;
const KEYS = { ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageDown: -10, PageUp: 10, Home: -MOST, End: MOST };

const USUAL = 40;

// What is no number counts as the usual width.
export const within = (columns) =>
  Number.isFinite(Number(columns)) ? Math.min(MOST, Math.max(LEAST, Math.round(columns))) : USUAL;

export class Width {
  constructor(slider, output, changed) {
    this.slider = slider;
    this.output = output;
    this.changed = changed;
    this.edges = new Set();
    this.columns = USUAL;
    slider.addEventListener('input', () => this.choose(Number(slider.value)));
  }

  choose(columns) {
    const chosen = within(columns);
    if (chosen === this.columns) return;
    this.show(chosen);
    this.changed();
  }

  show(columns) {
    this.columns = within(columns);
    this.slider.value = this.columns;
    this.slider.setAttribute('aria-valuetext', `${this.columns} columns`);
    this.output.textContent = `${this.columns} columns`;
    for (const edge of this.edges) this.tell(edge);
  }

  tell(edge) {
    edge.setAttribute('aria-valuenow', this.columns);
    edge.setAttribute('aria-valuetext', `${this.columns} columns`);
  }

  // An edge for a paper, which stands in the paper's element.
  edge() {
    const edge = element('div', {
      className: 'edge',
      role: 'slider',
      tabIndex: 0,
      title: 'Drag to change the width',
      'aria-label': 'Width of the paper',
      'aria-orientation': 'horizontal',
      'aria-valuemin': LEAST,
      'aria-valuemax': MOST,
    }, element('span', {}, icon('grip')));
    edge.addEventListener('pointerdown', (event) => this.drag(edge, event));
    edge.addEventListener('keydown', (event) => this.press(event));
    this.edges.add(edge);
    this.tell(edge);
    return edge;
  }

  press(event) {
    const step = KEYS[event.key];
    if (step === undefined || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    this.choose(this.columns + step);
  }

  drag(edge, event) {
    if (event.button !== 0) return;
    event.preventDefault();
    edge.focus({ preventScroll: true });
    edge.setPointerCapture(event.pointerId);
    const from = { x: event.clientX, columns: this.columns };
    const text = edge.parentElement.querySelector('pre');
    const column = text.getBoundingClientRect().width / this.columns;
    const move = ({ clientX }) => this.choose(from.columns + (clientX - from.x) / column);
    edge.addEventListener('pointermove', move);
    const stop = () => edge.removeEventListener('pointermove', move);
    edge.addEventListener('lostpointercapture', stop, { once: true });
  }
}
