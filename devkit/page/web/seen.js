// The device in words: the same as the picture, for those who read or listen.

import { colorOf, inWords } from './color.js';
import { byId, el, setFlag, setLongText } from './dom.js';

const kLonger = 60; // characters of a text that takes a whole row

function light({ color, asked, active, period, count }) {
  if (color === '') return 'not lit yet';
  const name = colorOf(color) ? color : `${color}, which is no known colour`;
  if (active && asked === 'fade') return `fading to ${name} in ${period} ms`;
  if (active && asked === 'pulse') return `${count} pulses of ${period} ms, ${name}`;
  return name;
}

function ear({ from, to }) {
  return from === to ? `step ${to}` : `step ${from}, turning to ${to}`;
}

const kCalls = { ringing: 'ringing', calling: 'calling', talking: 'talking' };

function call(calls) {
  return calls.map(({ who, state, name }) => `${name}: ${kCalls[state] ?? state} ${who}`).join(', ');
}

function photo({ active, name }) {
  return active ? `taking ${name}` : name && `last: ${name}`;
}

function mailbox({ messages, unread }) {
  if (messages === 0) return 'empty';
  return `${messages} ${messages === 1 ? 'message' : 'messages'}, ${unread} unread`;
}

function serial(ports) {
  const open = ports.filter((port) => port.open);
  return open
    .map(({ name, baud, lines }) => `${name}, ${baud} baud${lines?.length ? `: ${lines.at(-1).text}` : ''}`)
    .join('; ');
}

function things(device) {
  return {
    led: ['LED', light(device.led), device.led.color],
    'dock-led': ['Dock LED', light(device.dockLed), device.dockLed.color],
    'ear-left': ['Left ear', ear(device.ears.left)],
    'ear-right': ['Right ear', ear(device.ears.right)],
    dock: ['Dock', device.dock.active ? `moving ${device.dock.moving}` : 'at rest'],
    camera: ['Camera', photo(device.photo) || 'no photo yet'],
    call: ['Telephone', call(device.calls) || 'no call'],
    mailbox: ['Mailbox', mailbox(device)],
    serial: ['Serial ports', serial(device.ports) || 'none is open'],
  };
}

function place(name, label) {
  const list = byId('seen');
  let row = list.querySelector(`[data-show="${name}"]`);
  if (!row) {
    row = el(
      'div',
      { 'data-show': name },
      el('dt', {}, label),
      el('dd', {}, el('span', { class: 'swatch', hidden: true, 'aria-hidden': 'true' }), el('span')),
    );
    list.append(row);
  }
  return row;
}

export function showSeen(device) {
  for (const [name, [label, text, color]] of Object.entries(things(device))) {
    const row = place(name, label);
    const [swatch, words] = row.lastElementChild.children;
    setFlag(row, 'class', text.length > kLonger ? 'wide' : null);
    setLongText(words, text, row.lastElementChild);
    const rgb = color ? colorOf(color) : null;
    swatch.hidden = rgb === null;
    if (rgb) swatch.style.background = inWords(rgb);
  }
}
