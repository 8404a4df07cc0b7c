// Words for the application that listens. What a phrase meant last time is remembered by the browser.

import { button, byId, el, field, form, setText } from './dom.js';
import { card, panelOf } from './forms.js';
import { keep, recall } from './memory.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kPlace = 'desk-meanings';
const kMostMeanings = 100;
const kSure = 90;

function meanings() {
  try {
    return new Map(JSON.parse(recall(kPlace) ?? '[]'));
  } catch {
    return new Map();
  }
}

function remember(phrase, semantic) {
  const all = meanings();
  all.delete(phrase);
  if (semantic) all.set(phrase, semantic);
  keep(kPlace, JSON.stringify([...all].slice(-kMostMeanings)));
}

/** Says a phrase with the meaning that it had last. */
export function sayPhrase(phrase, app) {
  const semantic = meanings().get(phrase);
  return perform('recognition', semantic ? [phrase, kSure, semantic] : [phrase, kSure], {}, app);
}

function words() {
  const text = el('input', { name: 'text', required: true, autocomplete: 'off' });
  const sure = el('input', { name: 'confident', type: 'number', value: kSure, required: true });
  const semantic = el('textarea', {
    name: 'semantic',
    rows: 2,
    placeholder: '<menu><choice>on</choice></menu>',
    class: 'code',
  });
  // Other words do not keep the meaning of those before.
  text.addEventListener('change', () => {
    const known = meanings();
    const isOld = [...known.values()].includes(semantic.value);
    semantic.value = known.get(text.value) ?? (isOld ? '' : semantic.value);
  });
  return form(
    [
      field('Words', text),
      field('Confident (0 to 100)', sure),
      field('Meaning, in XML (optional)', semantic, { class: 'wide' }),
      el('button', { class: 'main' }, 'Say it'),
    ],
    (data) => {
      remember(data.text, data.semantic);
      perform('recognition', [data.text, Number(data.confident), ...(data.semantic ? [data.semantic] : [])]);
    },
    { 'aria-label': 'Say something', 'data-stimulus': 'recognition' },
  );
}

export function voicePanel() {
  const pending = el('p', { id: 'pending', 'data-show': 'pending' });
  const grammar = el('pre', { id: 'pending-grammar' });
  watch(['view'], () => {
    const listens = state.view?.work?.some((work) => work.work === 'asr');
    setText(pending, listens ? 'The device listens for this:' : 'Nobody listens at the moment.');
    setText(grammar, listens ? state.view.listening?.grammar : '');
    byId('count-voice').textContent = listens ? '!' : '';
  });
  return panelOf(
    card('What it listens for', pending, grammar),
    card(
      'Say something',
      words(),
      el(
        'div',
        { class: 'row' },
        button('Make noise instead', () => perform('noise'), { 'data-stimulus': 'noise' }),
      ),
    ),
  );
}
