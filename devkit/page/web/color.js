// Colours as applications write them: any text. A canvas tells which ones a browser knows; nothing
// else of such a text ever reaches a style.

const pen = document.createElement('canvas').getContext('2d');
const known = new Map();
const kMostKnown = 200;

function parse(text) {
  pen.fillStyle = '#010203';
  pen.fillStyle = text;
  const first = pen.fillStyle;
  pen.fillStyle = '#030201';
  pen.fillStyle = text;
  if (first !== pen.fillStyle || !first.startsWith('#')) return null;
  return [1, 3, 5].map((at) => parseInt(first.slice(at, at + 2), 16));
}

/** Red, green and blue from 0 to 255, or null for a text that is no colour. */
export function colorOf(text) {
  if (typeof text !== 'string') return null;
  if (!known.has(text)) {
    if (known.size >= kMostKnown) known.clear();
    known.set(text, parse(text));
  }
  return known.get(text);
}

/** The colour between two, `part` from 0 to 1 on the way. */
export const between = (from, to, part) => from.map((value, i) => value + (to[i] - value) * part);

export const brightness = (rgb) => Math.max(...rgb) / 255;

export const inWords = (rgb) => `rgb(${rgb.map(Math.round).join(' ')})`;
