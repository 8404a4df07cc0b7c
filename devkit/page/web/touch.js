// Button, ears and dock, for hands that rather use a form.

import { button, byId, el, field } from './dom.js';
import { card, cardOf, panelOf } from './forms.js';
import { press } from './press.js';
import { watch } from './store.js';

const kPresses = [
  ['SIMPLE', 'Once'],
  ['DOUBLE', 'Twice'],
  ['TRIPLE', 'Three times'],
  ['MULTIPLE', 'Many times'],
  ['LONG_START', 'Hold'],
  ['LONG_STOP', 'Let go'],
];

function earRow(side, ears) {
  const label = side === 'left' ? 'Left ear' : 'Right ear';
  const range = el('input', {
    type: 'range',
    min: 0,
    max: 16,
    step: 1,
    value: 0,
    'aria-label': `${label}: turn to a step`,
    'data-ear': side,
    oninput: () => ears.turn(side, Number(range.value)),
  });
  watch(['view'], () => {
    if (document.activeElement !== range) range.value = byId(`ear-${side}`).getAttribute('aria-valuenow');
  });
  return el(
    'div',
    { class: 'row ear-row' },
    field(label, range, { class: 'field ear-field' }),
    button('Block it', () => ears.block(side), {
      class: 'small',
      'data-block': side,
      'aria-label': `Block it: ${side} ear`,
    }),
  );
}

export const touchPanel = (ears) =>
  panelOf(
    card(
      'Press the button',
      el(
        'div',
        { class: 'row' },
        kPresses.map(([how, text], i) =>
          button(text, () => press(how), { 'data-press': how, class: i === 0 ? 'main' : '' }),
        ),
      ),
    ),
    card(
      'Turn or block an ear',
      el('p', {}, 'Drag an ear in the drawing, or use its arrow keys; B blocks it.'),
      earRow('left', ears),
      earRow('right', ears),
    ),
    cardOf('ears', 'Tell one thing of an ear', 'Tell it'),
    cardOf('dock', 'State of the dock', 'Tell it'),
  );
