// What stands one below the other in an element and changes little from one time to the next: pieces that
// are what they were keep their nodes, which need neither be made nor laid out again.
export class Pieces {
  #root;
  #make;
  #shown = [];

  // make(piece) gives the piece's node.
  constructor(root, make) {
    this.#root = root;
    this.#make = make;
  }

  // Pieces are texts, or what JSON tells apart.
  show(pieces) {
    const keys = pieces.map((piece) => JSON.stringify(piece));
    const before = this.#shown;
    const nodes = this.#root.childNodes;
    let end = 0; // of both, of which this many are the same
    while (end < Math.min(keys.length, before.length) && keys.at(-1 - end) === before.at(-1 - end)) end++;
    const [changed, gone] = [keys.length - end, before.length - end];
    for (let at = 0; at < Math.max(changed, gone); at++) {
      if (at >= changed) nodes[changed].remove();
      else if (at >= gone) this.#root.insertBefore(this.#make(pieces[at]), nodes[at] ?? null);
      else if (keys[at] !== before[at]) nodes[at].replaceWith(this.#make(pieces[at]));
    }
    this.#shown = keys;
  }
}
