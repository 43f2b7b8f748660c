#!/usr/bin/env bash
# page_test.sh COMMAND RECORDS: lays the HTML pages of all records out in a browser, as wide as a
# phone and as a desk, and measures what is where. Skipped (77) where there is no browser.
set -euo pipefail
command=$1
records=$2
browser=$(command -v chromium || command -v chromium-browser || command -v google-chrome) || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Texts that find no place to break, in a record that has every block.
long=$(printf 'W%.0s' {1..200})
cat >"$work/long.json" <<END
{
  "merch_name": "Joe's <b>&amp; Co $long", "merch_addr1": "$long", "merch_phone": "$long",
  "action": "$long", "cardtype": "$long", "rcpt_entry_mode": "$long", "account": "$long",
  "cardholdername": "$long", "ordernum": "$long", "rcpt_custom": "$long:$long",
  "amount": "90$(printf '1%.0s' {1..60})", "tax": "1234567.89", "u_need_signature": "yes",
  "order_total": "1", "printdata": "$long", "rcpt_emv_iad": "$long", "rcpt_user_notes": "$long",
  "line_items": [
    { "name": "$long", "qty": "1$long", "price": "90$(printf '1%.0s' {1..60})", "notes": "$long",
      "modifiers": [{ "name": "$long", "type": "discount_percent", "price": "$long" }] },
    { "name": "$long", "price": "1.00" }
  ]
}
END

# add_frames COPY RECORD: the page in frames of both widths.
add_frames() {
  local page width
  page=$("$command" --quiet --form html --page --copy "$1" "$2" |
    sed -e 's/&/\&amp;/g' -e 's/"/\&quot;/g')
  for width in 360 1280; do
    echo "<iframe name=\"$(basename "$2"), $1, $width pixels\" width=$width style=\"border: 0\"" \
      "srcdoc=\"$page\"></iframe>"
  done
}

{
  echo '<!DOCTYPE html><meta charset="utf-8"><body>'
  for record in "$records"/* "$work/long.json"; do
    add_frames customer "$record"
  done
  for record in "$records/restaurant-preauth-signature.json" "$work/long.json"; do
    add_frames merchant "$record"
  done
  cat <<'END'
<pre id="faults"></pre>
<script>
const faults = [];
let measured = 0;

// Where the text of an element is; an element's own box may be smaller.
function extent(node) {
  const range = document.createRange();
  range.selectNodeContents(node);
  return range.getBoundingClientRect();
}

function measure(page, name) {
  const fail = (node, what) => faults.push(`${name}: ${what}: ${node.id || node.className}`);
  const all = selector => [...page.querySelectorAll(selector)];
  const html = page.documentElement;
  if (html.scrollWidth > html.clientWidth)
    fail(html, 'scrolls sideways');

  for (const block of all('.rcpt_block')) {
    const space = block.getBoundingClientRect();
    for (const node of block.querySelectorAll('*')) {
      const { left, right, width } = extent(node);
      if (width > 0 && (left < space.left - 0.5 || right > space.right + 0.5))
        fail(node, 'reaches beyond its block');
    }
    for (const value of block.querySelectorAll('.amount > .rcpt_group_val, .price')) {
      if (value.textContent !== '' && Math.abs(extent(value).right - space.right) > 1)
        fail(value, 'does not end at the right margin');
      ++measured;
    }
  }

  for (const label of all('.rcpt_group_label')) {
    const beside = label.nextElementSibling;
    const [box, next] = [extent(label), beside && extent(beside)];
    if (label.textContent === '' ? label.getBoundingClientRect().width > 0
                                 : next && next.top < box.bottom && next.left < box.right)
      fail(label, label.textContent === '' ? 'takes room' : 'runs into its value');
  }

  const merchant = page.getElementById('merch_name');
  if (!merchant || !page.title.startsWith(merchant.textContent + ' \u2013 '))
    fail(html, 'has another title');
  if (!/^(en|fr|es|de|it)$/.test(html.lang))
    fail(html, 'has no language');
}

onload = () => {
  for (const frame of document.querySelectorAll('iframe'))
    measure(frame.contentDocument, frame.name);
  if (measured < 200)
    faults.push(`only ${measured} amounts`);
  document.getElementById('faults').textContent = (faults.join('\n') || 'none') + '\n';
};
</script>
END
} >"$work/pages.html"

faults=$("$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
  --disable-background-networking --disable-component-update --disable-sync \
  --user-data-dir="$work/profile" --dump-dom "file://$work/pages.html" 2>/dev/null |
  sed -n '/<pre id="faults">/,/<\/pre>/p' | sed -e 's/.*<pre id="faults">//' -e '/<\/pre>/d')
[ "$faults" = none ] && exit 0
echo "${faults:-the browser gave no answer}"
exit 1
