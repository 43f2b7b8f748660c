// other_encoders.mjs ENCODER LANGUAGE PAGE OPTION... < receipt: prints the lines of a receipt with an
// encoder of other people, the way a till would: told what stands out, by name.
import { readFileSync } from 'node:fs';
import ReceiptPrinterEncoder from '@point-of-sale/receipt-printer-encoder';
import thermal from 'node-thermal-printer';

const [encoderName, language, page, ...options] = process.argv.slice(2);
const value = (name) => (options.includes(name) ? options[options.indexOf(name) + 1] : '');
const lines = readFileSync(0, 'utf8').replace(/\n$/, '').split('\n');

const names = ['TILLERBIRD BAKERY', 'GASTHOF NEBELDISTEL'];
const bold = /^(CREDIT CARD SALE|DEBIT CARD SALE|KREDITKARTENVERKAUF|VENTE CARTES DE DEBIT|TOTAL: .*|GESAMT: .*|APPROVED|APPROUVE|GENEHMIGT)$/;
const styleOf = (text, index) => {
  if (index === 0 || names.includes(text)) return 'name';
  if (bold.test(text)) return 'bold';
  return /^(DUPLICATE|DUPLIKAT)$/.test(text) ? 'inverted' : 'plain';
};
const styled = lines.map((line, index) => {
  const text = line.trimStart();
  return { indent: line.slice(0, line.length - text.length), text, style: styleOf(text, index) };
});
const orderNumber = (styled.find(({ text }) => text.startsWith('ORDER #:'))?.text ?? '')
  .split(' ').at(-1);

function withReceiptPrinterEncoder() {
  const encoder = new ReceiptPrinterEncoder({
    language: language === 'star' ? 'star-prnt' : 'esc-pos',
    columns: 48,
    feedBeforeCut: 0,
  });
  encoder.initialize().codepage(page === 'cp1252' ? 'windows1252' : page);
  for (const { indent, text, style } of styled) {
    encoder.raw([...Buffer.from(indent, 'latin1')]);
    if (style === 'name') encoder.bold(true).height(2).text(text).height(1).bold(false);
    else if (style === 'bold') encoder.bold(true).text(text).bold(false);
    else if (style === 'inverted') encoder.invert(true).text(text).invert(false);
    else encoder.text(text);
    encoder.newline();
  }
  encoder.align('center');
  if (options.includes('--barcode'))
    encoder.barcode(language === 'star' ? orderNumber : `{B${orderNumber}`, 'code128',
      { height: 80, width: 2, text: true });
  if (value('--qr')) encoder.qrcode(value('--qr'), { model: 2, size: 6, errorlevel: 'm' });
  return encoder.align('left').cut(value('--cut')).encode();
}

function withThermalPrinter() {
  const { ThermalPrinter, PrinterTypes, CharacterSet } = thermal;
  const printer = new ThermalPrinter({
    type: PrinterTypes.EPSON,
    width: 48,
    breakLine: 'NONE',
    characterSet: {
      cp437: CharacterSet.PC437_USA,
      cp850: CharacterSet.PC850_MULTILINGUAL,
      cp858: CharacterSet.PC858_EURO,
      cp1252: CharacterSet.WPC1252,
    }[page],
  });
  for (const { indent, text, style } of styled) {
    printer.print(indent);
    if (style === 'name') printer.setTextDoubleHeight();
    if (style === 'name' || style === 'bold') printer.bold(true);
    if (style === 'inverted') printer.invert(true);
    printer.print(text);
    printer.invert(false);
    printer.bold(false);
    printer.setTextNormal();
    printer.newLine();
  }
  printer.alignCenter();
  if (value('--qr')) printer.printQR(value('--qr'), { cellSize: 6, correction: 'M', model: 2 });
  printer.alignLeft();
  if (value('--cut') === 'full') printer.cut({ verticalTabAmount: 0 });
  else printer.partialCut({ verticalTabAmount: 0 });
  return printer.getBuffer();
}

process.stdout.write(Buffer.from(encoderName === 'node-thermal-printer'
  ? withThermalPrinter() : withReceiptPrinterEncoder()));
