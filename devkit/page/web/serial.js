// Serial ports with their lines, and lines that come in.

import { el, field, form, replaceWhenNew } from './dom.js';
import { card, panelOf } from './forms.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kSigns = { written: '→', read: '←' };
const kWords = { written: 'the application wrote', read: 'came in' };

function line({ direction, text }) {
  return el(
    'li',
    {},
    el('span', { 'aria-hidden': 'true' }, `${kSigns[direction] ?? ''} `),
    el('span', { class: 'hidden' }, `${kWords[direction] ?? direction}: `),
    el('code', {}, text),
  );
}

function typing(port) {
  return form(
    [
      field(`A line for ${port.name}`, el('input', { name: 'text', autocomplete: 'off', required: true }), {
        class: 'wide',
      }),
      el('button', { class: 'main' }, 'Let it come in'),
    ],
    ({ text }, element) => {
      perform('serial', [port.name, text]);
      element.reset();
    },
    { 'data-port': port.name },
  );
}

// The lines are drawn anew, and the form beside them is not: somebody may be typing.
function portCard(port) {
  const about = el('p');
  const lines = el('ul', { class: 'kept', tabindex: 0, 'aria-label': `Lines of ${port.name}` });
  const made = card(port.name, about, lines, typing(port));
  made.show = ({ open, baud, base, lines: now = [] }) => {
    about.textContent = open ? `open, ${baud} baud${base ? `, base ${base}` : ''}` : 'not open';
    replaceWhenNew(lines, now, () => now.map(line));
    lines.scrollTop = lines.scrollHeight;
  };
  return made;
}

export function serialPanel() {
  const ports = el('div', { class: 'panel', id: 'ports' });
  const cards = new Map();
  const none = el('p', { class: 'empty' }, 'No application has used a serial port yet.');
  watch(['view'], () => {
    const now = state.view?.ports ?? [];
    for (const port of now) {
      if (!cards.has(port.name)) {
        cards.set(port.name, portCard(port));
        ports.append(cards.get(port.name));
      }
      cards.get(port.name).show(port);
    }
    none.hidden = now.length > 0;
  });
  const any = form(
    [
      field('Port', el('input', { name: 'port', required: true, autocomplete: 'off', value: '/dev/ttyS1' })),
      field('Base (optional)', el('input', { name: 'base', autocomplete: 'off' })),
      field('Line', el('input', { name: 'text', required: true, autocomplete: 'off' }), { class: 'wide' }),
      el('button', { class: 'main' }, 'Let it come in'),
    ],
    ({ port, text, base }) => perform('serial', base ? [port, text, base] : [port, text]),
    { 'data-stimulus': 'serial' },
  );
  return panelOf(none, ports, card('A line on any port', any));
}
