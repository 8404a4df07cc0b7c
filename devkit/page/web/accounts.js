// The user's credentials: their names, never their values.

import { button, el, replaceWhenNew } from './dom.js';
import { card, cardOf, panelOf } from './forms.js';
import { perform, stimulusNamed } from './perform.js';
import { state, watch } from './store.js';

// A name with no value behind it loses its own.
function forget(name) {
  const values = stimulusNamed('credentials')?.arguments.find((argument) => argument.kind === 'pair');
  return perform('credentials', [], { [values?.name ?? 'values']: { [name]: '' } });
}

const credential = (name) =>
  el(
    'li',
    {},
    button(`Forget ${name}`, () => forget(name), { class: 'small', 'data-credential': name }),
  );

export function accountsPanel() {
  const kept = el('ul', { class: 'row', id: 'credentials', 'aria-label': 'Credentials that are kept' });
  const withheld = el('p', {});
  watch(['view'], () => {
    const { kept: names = [], withheld: hidden = false } = state.view?.credentials ?? {};
    replaceWhenNew(kept, names, () =>
      names.length > 0 ? names.map(credential) : [el('li', { class: 'empty' }, 'None are kept.')],
    );
    withheld.textContent = hidden
      ? 'They are withheld: applications are told of none.'
      : 'Applications get them when they ask.';
  });
  return panelOf(
    card(
      'Credentials',
      kept,
      withheld,
      el(
        'div',
        { class: 'row' },
        button('Withhold them', () => perform('credentials', ['withhold']), {
          'data-credentials': 'withhold',
        }),
        button('Give them', () => perform('credentials', ['give']), { 'data-credentials': 'give' }),
      ),
    ),
    cardOf('credentials', 'Keep credentials', 'Keep them'),
  );
}
