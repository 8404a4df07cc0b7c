// What is said, what is listened for, and who is on the telephone, above the device.

import { announce } from './announce.js';
import { callActions } from './calls.js';
import { button, byId, el, replaceWhenNew, setFlag, setLongText, setText } from './dom.js';
import { choicesOf } from './grammar.js';
import { perform } from './perform.js';
import { sayPhrase } from './voice.js';

const goneBy = (work, now) =>
  work.length > 0 ? Math.min(1, Math.max(0, (now - work.begin) / work.length)) : 0;

/** Fills a meter to the part of a work that is over. */
export function showMeter(id, work, now) {
  byId(id).style.transform = `scaleX(${work.active ? goneBy(work, now).toFixed(3) : 0})`;
}

let announced = null;

function showSpeech(speech) {
  const bubble = byId('speech');
  bubble.hidden = !speech.text;
  setFlag(bubble, 'class', `bubble speech${speech.active ? '' : ' past'}`);
  setText(byId('speech-what'), speech.active ? 'Says' : 'Said last');
  setText(byId('speech-lang'), speech.lang);
  setLongText(byId('speech-text'), speech.text);
  if (speech.active && announced !== speech.begin) announce(`The device says: ${speech.text}`);
  announced = speech.active ? speech.begin : null;
}

function choiceButtons(phrases, app) {
  return phrases
    .map((phrase) => button(phrase, () => sayPhrase(phrase, app), { class: 'small', 'data-say': phrase }))
    .concat(
      button('noise', () => perform('noise', [], {}, app), { class: 'small quiet', 'data-say-noise': true }),
    );
}

let heard = null;

function showListening(listening) {
  byId('listening').hidden = !listening.active;
  setText(byId('listening-lang'), listening.lang);
  setLongText(byId('listening-text'), listening.grammar);
  const phrases = choicesOf(listening.grammar);
  replaceWhenNew(byId('listening-choices'), [listening.active, listening.app, phrases], () =>
    listening.active ? choiceButtons(phrases, listening.app) : [],
  );
  if (listening.active && heard !== listening.begin) announce('The device listens for words');
  heard = listening.active ? listening.begin : null;
}

const kCallWords = { ringing: 'calls', calling: 'is being called', talking: 'is on the telephone' };

function callBubble(call) {
  return el(
    'li',
    { class: 'call-bubble', 'data-call': call.state },
    el('span', { class: 'call-sign', 'aria-hidden': 'true' }, '☎'),
    el('span', {}, el('b', {}, call.who || 'somebody'), ` ${kCallWords[call.state] ?? call.state}`),
    el('span', { class: 'chip' }, call.name),
    el('span', { class: 'row' }, callActions(call)),
  );
}

function showCalls(calls) {
  const list = byId('calls-now');
  list.hidden = calls.length === 0;
  const before = list.shownKey;
  replaceWhenNew(list, calls, () => calls.map(callBubble));
  if (before === list.shownKey || calls.length === 0) return;
  const { who, state } = calls.at(-1);
  announce(`${who || 'somebody'} ${kCallWords[state] ?? state}`);
}

export function showBubbles(device) {
  showSpeech(device.speech);
  showListening(device.listening);
  showCalls(device.calls);
}

/** The bars that run while something goes on. Gives whether one does. */
export function runBubbles(device, now) {
  showMeter('speech-meter', device.speech, now);
  showMeter('listening-meter', device.listening, now);
  return device.speech.active || device.listening.active;
}
