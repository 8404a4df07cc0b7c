// What can go wrong, on purpose.

import { button, el, replaceWhenNew } from './dom.js';
import { lengthOf } from './clock.js';
import { card, cardOf, panelOf } from './forms.js';
import { nameOf } from './names.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

function often(left) {
  if (left === undefined) return 'always';
  return left === 1 ? 'once' : `${left} times`;
}

function inForce({ refusals = [], delays = [], deliveries = [] }) {
  return [
    ...refusals.map(
      ({ code, command, application, left }) =>
        `${command ?? 'any command'}` +
        `${application ? ` of ${nameOf(application)}` : ''} is answered with ${code}, ${often(left)}`,
    ),
    ...delays.map(
      ({ command, length }) => `${command ?? 'any command'} is answered ${lengthOf(length)} later`,
    ),
    ...deliveries.map(
      ({ application, pieceSize, pause }) =>
        `the next message to ${nameOf(application)} goes in pieces of ${pieceSize} bytes, ${pause} ms apart`,
    ),
  ];
}

function quick(text, name, words) {
  return button(text, () => perform(name, words), { class: 'small', 'data-quick': text });
}

export function misbehavePanel() {
  const list = el('ul', { class: 'kept', id: 'faults', tabindex: 0, 'aria-label': 'In force' });
  watch(['view', 'applications'], () => {
    const faults = inForce(state.view?.faults ?? {});
    document.getElementById('count-misbehave').textContent = faults.length > 0 ? faults.length : '';
    replaceWhenNew(list, faults, () =>
      faults.length > 0
        ? faults.map((text) => el('li', {}, text))
        : [el('li', { class: 'empty' }, 'It behaves.')],
    );
  });
  return panelOf(
    card('In force', list),
    card(
      'At once',
      el(
        'div',
        { class: 'row' },
        quick('Next reply BUSY', 'refuse', ['BUSY']),
        quick('Next reply ERROR', 'refuse', ['ERROR']),
        quick('Refuse interactive mode', 'refuse', ['ERROR', 'interactiveMode']),
        quick('Stop interactive mode', 'stop', []),
        quick('Answer a second later', 'delay', [1000]),
        quick('Answer at once', 'delay', [0]),
        quick('Next message in pieces', 'pieces', [3]),
        quick('Drop the connection', 'drop', []),
        quick('Refuse nothing any more', 'accept', []),
      ),
    ),
    cardOf('refuse', 'Refuse commands', 'Refuse'),
    cardOf('delay', 'Answer later', 'Delay'),
    cardOf('finish', 'End what goes on', 'End it'),
    cardOf('pieces', 'Send in pieces', 'Send so'),
  );
}
