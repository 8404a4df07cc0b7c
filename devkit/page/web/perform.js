// What the page does to the device: one stimulus, its outcome shown and told.

import { byId, setFlag, setLongText } from './dom.js';
import { request } from './socket.js';
import { state } from './store.js';

const kSeen = new Set(['ear']); // what the picture alone tells, many times a second

function show(outcome, name) {
  const place = byId('outcome');
  const text = (outcome.text ?? '').trim();
  if (outcome.done && text === '' && kSeen.has(name)) return;
  place.textContent = ''; // the same once more is told once more
  setLongText(place, text || (outcome.done ? `${name}: done` : `${name}: not done`));
  setFlag(place, 'data-done', outcome.done ? 'yes' : 'no');
}

/** The application that stimuli are for: its number, or null for every one. */
function forWhom() {
  const chosen = byId('for-app').value;
  return chosen === '' ? null : Number(chosen);
}

export const stimulusNamed = (name) => state.stimuli.find((stimulus) => stimulus.name === name);

const same = (one, other) => one.toLowerCase() === String(other).toLowerCase();

function takes({ kind, choices = [] }, word) {
  if (kind === 'choice' || kind === 'name') return choices.some((one) => same(one, word));
  return kind === 'number' ? Number.isFinite(Number(word)) : kind !== 'pair';
}

// The table tells what the words of a line are called. One that may be left out is passed over when
// the word cannot be meant for it.
function inNames({ arguments: table }, words) {
  const values = {};
  let at = 0;
  for (const word of words) {
    while (at < table.length - 1 && !table[at].needed && !takes(table[at], word)) at += 1;
    values[table[at]?.name ?? `argument ${at + 1}`] = word;
    at += 1;
  }
  return values;
}

/**
 * Does a stimulus: `words` are its arguments in their order, `named` those that have names. It is for
 * the application that is chosen, or for `app`; for none when the device as a whole is meant. Gives the
 * outcome, {done, text}.
 */
export async function perform(name, words = [], named = {}, app = forWhom()) {
  const stimulus = stimulusNamed(name);
  const values = { ...inNames(stimulus ?? { arguments: [] }, words), ...named };
  const whom = stimulus?.for === 'device' ? null : app;
  const outcome = await request('stimulus', { name, arguments: values, app: whom });
  show(outcome, name);
  return outcome;
}

/** Acts on an application: "restart", "launch" or "stop". */
export async function act(action, app, launchType = 'plain') {
  const outcome = await request('act', { action, app, launchType });
  show(outcome, `${action} ${app}`);
  return outcome;
}

/** Keeps the drawer of tags. */
export async function saveTags(tags) {
  const outcome = await request('save-tags', { tags });
  if (!outcome.done) show(outcome, 'tags');
  return outcome;
}
