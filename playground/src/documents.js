// A receipt's copy as a page.

export const copyText = (copy) => copy.blocks.map((block) => block.text.replaceAll('\r\n', '\n')).join('\n\n');

const COPY_TITLES = { customer: 'Receipt', merchant: 'Receipt, merchant copy' };

// One copy as a page of its own, which fetches nothing. The blocks are markup.
export function htmlPage(copy, { lang, isApproved, style }) {
  return `<!DOCTYPE html>
<html lang="${lang}">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light">
<meta name="format-detection" content="telephone=no">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<title>${COPY_TITLES[copy.name]}</title>
<style>
${style}</style>
</head>
<body>
<main class="receipt${isApproved ? '' : ' rcpt_not_approved'}">
${copy.blocks.map((block) => `${block.text}\n`).join('')}</main>
</body>
</html>
`;
}
