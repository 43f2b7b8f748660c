// The editor's style sheets without an element of inline style, which the page's policy refuses.
import { StyleModule as Elements } from '../node_modules/style-mod/src/style-mod.js';

const mounted = new WeakMap(); // the sheet of a document or shadow root

export class StyleModule extends Elements {
  static mount(root, modules) {
    const rules = [modules].flat().map((module) => module.getRules());
    let sheet = mounted.get(root);
    if (!sheet) {
      sheet = new CSSStyleSheet();
      mounted.set(root, sheet);
      root.adoptedStyleSheets = [...root.adoptedStyleSheets, sheet];
    }
    sheet.replaceSync(rules.join('\n'));
  }
}
