// Bars and modules as pictures.
import qrcode from 'qrcode-generator';

const SVG = 'http://www.w3.org/2000/svg';

// CODE128 (ISO/IEC 15417): the widths of bars and gaps by value; 106 is the stop character.
const WIDTHS =
  '2122222221222222211212231213221312221222131223121322122212132213122312121122321221321222311132221231221232212232112211322212312132122231123121313112223211223212213122123221123222112121232123212321211113231311231313211123131321131323112113132311132313111121331123311321311131231133211331213131212113312311312131132133112131313111233113213311213121133123113321113141112214114311111112241114221211241214211411221412211122141124121221141224111421121422112412112211144131112411121341111112421211421212411142121241121242114112124211124212112121412141214121211111431113411311411141131143114111134113111131411141313111414111312114122112142112322331112';

function widthsOf(value) {
  return [...WIDTHS.slice(6 * value, 6 * value + (value === 106 ? 7 : 6))].map(Number);
}

// The values of a text: set C for pairs of digits, otherwise set B.
function code128Values(text) {
  const byPairs = text.length >= 4 && /^(\d\d)+$/.test(text);
  const data = byPairs ? text.match(/../g).map(Number) : [...text].map((character) => character.charCodeAt(0) - 32);
  const start = byPairs ? 105 : 104;
  const check = data.reduce((sum, value, index) => sum + value * (index + 1), start) % 103;
  return [start, ...data, check, 106];
}

function picture(width, height, path, label) {
  const svg = document.createElementNS(SVG, 'svg');
  svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
  svg.setAttribute('shape-rendering', 'crispEdges');
  svg.setAttribute('role', 'img');
  svg.setAttribute('aria-label', label);
  const drawn = document.createElementNS(SVG, 'path');
  drawn.setAttribute('d', path);
  drawn.setAttribute('fill', 'currentColor');
  svg.append(drawn);
  return svg;
}

export function drawBarcode(text, height) {
  let x = 0;
  let path = '';
  code128Values(text).flatMap(widthsOf).forEach((width, index) => {
    if (index % 2 === 0) path += `M${x} 0h${width}v${height}h-${width}z`;
    x += width;
  });
  return { modules: x, svg: picture(x, height, path, `Barcode: ${text}`) };
}

export function drawQr(text, level) {
  const code = qrcode(0, level);
  code.addData(String.fromCharCode(...new TextEncoder().encode(text)), 'Byte');
  code.make();
  const modules = code.getModuleCount();
  let path = '';
  for (let row = 0; row < modules; row++)
    for (let column = 0; column < modules; column++)
      if (code.isDark(row, column)) path += `M${column} ${row}h1v1h-1z`;
  return { modules, svg: picture(modules, modules, path, `QR code: ${text}`) };
}
