// The player and its library, the camera and the recorder.

import { button, choice, el, field, form, replaceWhenNew, setText } from './dom.js';
import { card, cardOf, panelOf } from './forms.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kCodes = ['TERMINATED', 'ERROR', 'CANCELLED', 'TIMEOUT', 'BUSY'];
const kActions = [['PLAY', '▶ Play'], ['PAUSE', '❚❚ Pause'], ['RESUME', '▶ Resume'], ['STOP', '■ Stop'],
  ['MUSIC_UPDATE', 'Library changed']];

function ending(work, label) {
  return form([
    field('How it ends', choice(kCodes, { name: 'code' })),
    field('With this text (optional)', el('input', { name: 'text', autocomplete: 'off' })),
    el('button', {}, label),
  ], ({ code, text }) => perform('finish', text ? [work, code, text] : [work, code]), { 'aria-label': label, class: 'fields tight' });
}

function status(work, words) {
  const line = el('p');
  watch(['view'], () => {
    const active = state.view?.work?.some((one) => one.work === work);
    setText(line, words(active, state.view ?? {}));
  });
  return line;
}

function library() {
  const list = el('dl', { class: 'kept', tabindex: 0, 'aria-label': 'Music library' });
  watch(['view'], () => {
    const lists = state.view?.library ?? {};
    replaceWhenNew(list, lists, () => Object.entries(lists).flatMap(([name, names]) =>
      [el('dt', { class: 'meta' }, name), el('dd', {}, names.join(', ') || 'none')]));
  });
  return list;
}

export const mediaPanel = () => panelOf(
  card('The player', status('sound', (active, { player }) => (player?.url ? `${player.mode}: ${player.url}` : 'Nothing was played yet.')),
    el('p', {}, 'Tell applications what somebody does at the player:'),
    el('div', { class: 'row' }, kActions.map(([what, text]) =>
      button(text, () => perform('player', [what]), { 'data-player': what, class: 'small' }))),
    ending('sound', 'End the sound')),
  card('Camera', status('photo', (active, { photo }) =>
    (active ? `Takes the photo "${photo?.name ?? ''}".` : photo?.name ? `The last photo was "${photo.name}".` : 'No photo was asked for yet.')),
  ending('photo', 'End the photo')),
  cardOf('picture', 'Which picture it takes'),
  card('Recorder', status('record', (active, { recorder }) =>
    (active ? `Records "${recorder?.url ?? ''}".` : 'Does not record.')), ending('record', 'End the recording')),
  cardOf('recording', 'What it records'),
  card('Speech', status('tts', (active, { speech }) => (active ? `Says "${speech?.text ?? ''}".` : 'Says nothing.')),
    ending('tts', 'End what is said')),
  card('Music library', library()),
  cardOf('library', 'Put other names into the library'));
