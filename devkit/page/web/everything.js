// Every stimulus that the device knows, with a form drawn from its table.

import { choice, el, field } from './dom.js';
import { formOf, panelOf } from './forms.js';
import { stimulusNamed } from './perform.js';
import { state } from './store.js';

// A usage has long words that are broken between their choices.
const breakable = (usage) => usage.split(/(?<=\|)/).flatMap((part) => [part, el('wbr')]);

export function everythingPanel() {
  const all = state.stimuli.filter((stimulus) => stimulus.name !== 'help');
  const chosen = choice(
    all.map(({ name, help }) => [name, `${name}: ${help}`]),
    { id: 'everything' },
  );
  const place = el('div', { class: 'card', id: 'everything-form' });
  const draw = () => {
    const stimulus = stimulusNamed(chosen.value);
    if (!stimulus) return;
    place.replaceChildren(
      el('p', {}, stimulus.help),
      el('code', {}, breakable(`${stimulus.name} ${stimulus.usage ?? ''}`)),
      formOf(stimulus.name, `Do it: ${stimulus.name}`),
      stimulus.for === 'device' ? el('p', { class: 'hint' }, 'This is for the device as a whole.') : '',
    );
  };
  chosen.addEventListener('change', draw);
  draw();
  return panelOf(field('Everything that can be done to the device', chosen, { class: 'field' }), place);
}
