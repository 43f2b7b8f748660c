// A receipt as a component:
//
//   <Suspense fallback="…">
//     <Receipt record={record} options={{ language: 'fr', currency: 'CAD' }} copy="merchant" />
//   </Suspense>
//
// The page brings the style sheet qelrcpt/receipt.css along.
import { use, useMemo } from 'react';
import { load, render } from 'qelrcpt';

// source: where the library's module is, if not beside the package's script. It is loaded once.
export function Receipt({ record, options, copy = 'customer', source }) {
  use(load(source));
  const receipt = useMemo(() => render(record, { ...options, form: 'html', copy }), [record, options, copy]);
  const shown = receipt[copy];
  if (shown === undefined) return null; // not every merchant has a copy
  return (
    <article className={receipt.approved ? 'receipt' : 'receipt rcpt_not_approved'} aria-label="Receipt">
      {shown.blocks.map(({ name, text }) => (
        // Values of the record are escaped.
        <div key={name} dangerouslySetInnerHTML={{ __html: text }} />
      ))}
    </article>
  );
}
