// The player and its library, the camera and the recorder.

import { button, choice, el, field, form, replaceWhenNew, setText } from './dom.js';
import { card, cardOf, panelOf } from './forms.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kCodes = ['TERMINATED', 'ERROR', 'CANCELLED', 'TIMEOUT', 'BUSY'];
const kActions = [
  ['PLAY', '▶ Play'],
  ['PAUSE', '❚❚ Pause'],
  ['RESUME', '▶ Resume'],
  ['STOP', '■ Stop'],
  ['MUSIC_UPDATE', 'Library changed'],
];

function ending(work, label) {
  return form(
    [
      field('How it ends', choice(kCodes, { name: 'code' })),
      field('With this text (optional)', el('input', { name: 'text', autocomplete: 'off' })),
      el('button', {}, label),
    ],
    ({ code, text }) => perform('finish', text ? [work, code, text] : [work, code]),
    { 'aria-label': label, class: 'fields tight' },
  );
}

function status(work, words) {
  const line = el('p');
  watch(['view'], () => {
    const active = state.view?.work?.some((one) => one.work === work);
    setText(line, words(active, state.view ?? {}));
  });
  return line;
}

// Which file of the user's they give.
const chosen = (verb, part, usual) =>
  status('', (active, view) => `${verb} ${view[part]?.file ?? `the device's own ${usual}`}.`);

function library() {
  const list = el('dl', { class: 'kept', tabindex: 0, 'aria-label': 'Music library' });
  watch(['view'], () => {
    const lists = state.view?.library ?? {};
    replaceWhenNew(list, lists, () =>
      Object.entries(lists).flatMap(([name, names]) => [
        el('dt', { class: 'meta' }, name),
        el('dd', {}, names.join(', ') || 'none'),
      ]),
    );
  });
  return list;
}

function player() {
  const words = (active, { player: { mode, url } = {} }) =>
    url ? `${mode}: ${url}` : 'Nothing was played yet.';
  const buttons = kActions.map(([what, text]) =>
    button(text, () => perform('player', [what]), { 'data-player': what, class: 'small' }),
  );
  return card(
    'The player',
    status('sound', words),
    el('p', {}, 'Tell applications what somebody does at the player:'),
    el('div', { class: 'row' }, buttons),
    ending('sound', 'End the sound'),
  );
}

function camera() {
  const words = (active, { photo }) => {
    if (!photo?.name) return 'No photo was asked for yet.';
    return active ? `Takes the photo "${photo.name}".` : `The last photo was "${photo.name}".`;
  };
  return card(
    'Camera',
    status('photo', words),
    chosen('Photos show', 'photo', 'picture'),
    ending('photo', 'End the photo'),
  );
}

function recorder() {
  const words = (active, view) => (active ? `Records "${view.recorder?.url ?? ''}".` : 'Does not record.');
  return card(
    'Recorder',
    status('record', words),
    chosen('Recordings hold', 'recorder', 'silence'),
    ending('record', 'End the recording'),
  );
}

function speech() {
  const words = (active, view) => (active ? `Says "${view.speech?.text ?? ''}".` : 'Says nothing.');
  return card('Speech', status('tts', words), ending('tts', 'End what is said'));
}

export const mediaPanel = () =>
  panelOf(
    player(),
    camera(),
    cardOf('picture', 'Which picture it takes', 'Choose it'),
    recorder(),
    cardOf('recording', 'What it records', 'Choose it'),
    speech(),
    card('Music library', library()),
    cardOf('library', 'Put other names into the library'),
  );
