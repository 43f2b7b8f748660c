// The editor of the record: JSON in colours, with line numbers, and what is wrong beside its line.
import { autocompletion, closeBrackets, closeBracketsKeymap, completionKeymap } from '@codemirror/autocomplete';
import { defaultKeymap, history, historyKeymap } from '@codemirror/commands';
import { json } from '@codemirror/lang-json';
import { bracketMatching, foldGutter, foldKeymap, HighlightStyle, indentOnInput, indentUnit, syntaxHighlighting } from '@codemirror/language';
import { lintGutter, lintKeymap, setDiagnostics } from '@codemirror/lint';
import { highlightSelectionMatches, search, searchKeymap } from '@codemirror/search';
import { EditorState } from '@codemirror/state';
import { drawSelection, EditorView, highlightActiveLine, highlightActiveLineGutter, keymap, lineNumbers } from '@codemirror/view';
import { tags } from '@lezer/highlight';
import { completeKeys, explainKeys } from './record_keys.js';

const colours = HighlightStyle.define([
  { tag: tags.propertyName, color: 'var(--key)' },
  { tag: tags.string, color: 'var(--string)' },
  { tag: [tags.number, tags.bool, tags.null], color: 'var(--number)' },
  { tag: tags.comment, color: 'var(--comment)' },
  { tag: [tags.brace, tags.squareBracket, tags.separator], color: 'var(--soft)' },
]);

const marker = (colour, shape) => ({
  content: '""',
  display: 'block',
  width: '0.6em',
  height: '0.6em',
  margin: '0.35em auto 0',
  background: colour,
  ...shape,
});

const underline = (colour, style) => ({
  backgroundImage: 'none',
  paddingBottom: '0',
  textDecoration: `underline ${style} ${colour} 1.5px`,
  textUnderlineOffset: '3px',
  textDecorationSkipInk: 'none',
});

// Without the pictures that the packages bring, which the page's policy refuses.
const look = EditorView.theme({
  '&': { height: '100%', fontSize: '0.82rem', backgroundColor: 'var(--panel)', color: 'var(--text)' },
  '&.cm-focused': { outline: '2px solid var(--accent)', outlineOffset: '-2px' },
  '.cm-scroller': { fontFamily: 'var(--mono)', lineHeight: '1.5', overflow: 'auto' },
  '.cm-content': { caretColor: 'var(--text)', padding: '0.5rem 0' },
  '.cm-cursor': { borderLeftColor: 'var(--text)' },
  '.cm-gutters': { backgroundColor: 'var(--panel)', color: 'var(--soft)', border: 'none' },
  '.cm-gutter-lint': { width: '1.1em' },
  '.cm-gutter-lint .cm-gutterElement': { padding: '0' },
  '.cm-foldGutter .cm-gutterElement': { cursor: 'pointer' },
  '.cm-activeLine': { backgroundColor: 'light-dark(rgb(31 79 209 / 5%), rgb(143 178 255 / 8%))' },
  '.cm-activeLineGutter': { backgroundColor: 'transparent', color: 'var(--text)' },
  '&.cm-focused .cm-selectionBackground, .cm-selectionBackground, ::selection': { backgroundColor: 'light-dark(#c9d8fb, #35476f) !important' },
  '.cm-matchingBracket': { backgroundColor: 'var(--accent-ground) !important', outline: '1px solid var(--accent)' },
  '.cm-selectionMatch': { backgroundColor: 'light-dark(#f3e9b8, #4a431f)' },
  '.cm-searchMatch': { backgroundColor: 'light-dark(#f3e9b8, #4a431f)', outline: '1px solid var(--warning)' },
  '.cm-panels': { backgroundColor: 'var(--ground)', color: 'var(--text)', borderColor: 'var(--line) !important' },
  '.cm-textfield, .cm-button': { backgroundColor: 'var(--raised)', backgroundImage: 'none', color: 'inherit', borderColor: 'var(--line)' },
  '.cm-tooltip': { backgroundColor: 'var(--raised)', color: 'var(--text)', border: '1px solid var(--line)', borderRadius: '6px', boxShadow: '0 4px 16px rgb(0 0 0 / 20%)', maxWidth: '34rem', fontFamily: 'var(--sans)' },
  '.cm-tooltip-autocomplete > ul': { fontFamily: 'var(--mono)', maxHeight: '14rem' },
  '.cm-tooltip-autocomplete > ul > li[aria-selected]': { backgroundColor: 'var(--accent)', color: 'var(--on-accent)' },
  '.cm-completionDetail': { marginLeft: '0.8em', fontStyle: 'normal', fontFamily: 'var(--sans)', opacity: '0.8' },
  '.cm-completionInfo, .cm-key': { padding: '0.4rem 0.7rem', maxWidth: '22rem' },
  '.cm-completionMatchedText': { textDecoration: 'none', fontWeight: '700' },
  '.cm-diagnostic': { padding: '0.4rem 0.7rem', borderLeftWidth: '4px' },
  '.cm-diagnostic-error': { borderLeftColor: 'var(--error)' },
  '.cm-diagnostic-warning': { borderLeftColor: 'var(--warning)' },
  '.cm-diagnostic-info': { borderLeftColor: 'var(--note)' },
  '.cm-diagnosticSource': { color: 'var(--soft)', opacity: '1', fontSize: '0.75rem' },
  '.cm-lintRange-error': underline('var(--error)', 'wavy'),
  '.cm-lintRange-warning': underline('var(--warning)', 'wavy'),
  '.cm-lintRange-info': underline('var(--note)', 'dotted'),
  '.cm-lintRange-active': { backgroundColor: 'var(--accent-ground)' },
  '.cm-lint-marker': { content: 'normal', width: '100%', height: '1.3em' },
  '.cm-lint-marker-error, .cm-lint-marker-warning, .cm-lint-marker-info': { content: 'normal' },
  '.cm-lint-marker-error::before': marker('var(--error)', { borderRadius: '50%' }),
  '.cm-lint-marker-warning::before': marker('var(--warning)', { clipPath: 'polygon(50% 0, 100% 100%, 0 100%)' }),
  '.cm-lint-marker-info::before': marker('var(--note)', { borderRadius: '1px' }),
});

export class Editor {
  // changed() is called once the text is another, pasted(text) with what was put in place of all of it.
  constructor(parent, { changed, pasted }) {
    this.view = new EditorView({
      parent,
      state: EditorState.create({
        extensions: [
          lineNumbers(),
          lintGutter(),
          foldGutter(),
          highlightActiveLine(),
          highlightActiveLineGutter(),
          history(),
          drawSelection(),
          indentOnInput(),
          indentUnit.of('  '),
          bracketMatching(),
          highlightSelectionMatches(),
          search({ top: true }),
          closeBrackets(),
          autocompletion({ override: [completeKeys], icons: false }),
          explainKeys,
          EditorView.lineWrapping,
          EditorState.tabSize.of(2),
          json(),
          syntaxHighlighting(colours),
          look,
          keymap.of([...closeBracketsKeymap, ...completionKeymap, ...defaultKeymap, ...historyKeymap, ...searchKeymap, ...lintKeymap, ...foldKeymap]),
          EditorView.contentAttributes.of({ 'aria-label': 'Record as JSON', spellcheck: 'false', autocorrect: 'off', autocapitalize: 'off' }),
          EditorView.updateListener.of((update) => {
            if (!update.docChanged) return;
            const isPaste = update.transactions.some((made) => made.isUserEvent('input.paste'));
            const isAll = update.changes.touchesRange(0) && update.startState.selection.main.to - update.startState.selection.main.from === update.startState.doc.length;
            queueMicrotask(isPaste && isAll ? () => pasted(this.text) : changed);
          }),
        ],
      }),
    });
  }

  get text() {
    return this.view.state.doc.toString();
  }

  set text(text) {
    const { state } = this.view;
    if (this.text === text) return;
    this.view.dispatch({ changes: { from: 0, to: state.doc.length, insert: text }, selection: { anchor: 0 }, scrollIntoView: true });
  }

  // The line, from 1, of a place in the text.
  lineAt(place) {
    return this.view.state.doc.lineAt(Math.min(place, this.view.state.doc.length)).number;
  }

  // What is wrong: { from, to, severity, message, source } each.
  mark(diagnostics) {
    const { length } = this.view.state.doc;
    const within = (place) => Math.max(0, Math.min(place, length));
    this.view.dispatch(setDiagnostics(this.view.state, diagnostics.map((diagnostic) => ({
      ...diagnostic, from: within(diagnostic.from), to: within(diagnostic.to) }))));
  }

  show(from) {
    this.view.dispatch({ selection: { anchor: from }, effects: EditorView.scrollIntoView(from, { y: 'center' }) });
    this.view.focus();
  }
}
