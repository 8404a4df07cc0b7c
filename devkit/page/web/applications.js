// The applications: how each is, and why one has ended.

import { announce } from './announce.js';
import { deviceNow, lengthOf } from './clock.js';
import { button, byId, el, replaceWhenNew, setText } from './dom.js';
import { hueOf } from './names.js';
import { act } from './perform.js';
import { state, watch } from './store.js';

const kTick = 500; // milliseconds
const kWords = {
  started: 'started',
  connected: 'connected',
  waiting: 'waits for interactive mode',
  interactive: 'interactive',
  stopping: 'stops',
  ended: 'ended',
};
const kCalm = new Set(['exit', 'left', 'restart', 'quit', 'author']); // ends that somebody wanted
const ended = new Map(); // what was announced, by name

const nameOf = (app) => app.name ?? `app ${app.number}`;
const textOf = (thing) =>
  typeof thing === 'string' ? thing : (thing?.sentence ?? thing?.text ?? JSON.stringify(thing));
const cureOf = (thing) => (typeof thing === 'object' && thing?.cure ? ` ${thing.cure}` : '');

function lastLines(lines) {
  if (!lines?.length) return null;
  return el('details', {}, el('summary', {}, 'Its last lines'), el('pre', {}, lines.map(textOf).join('\n')));
}

function endOf(end) {
  return [
    el('p', { class: 'why' }, el('strong', {}, end.sentence ?? end.kind)),
    end.cure ? el('p', { class: 'cure' }, end.cure) : null,
    lastLines(end.lines),
  ];
}

const hint = (thing) => el('p', { class: 'hint' }, `⚠ ${textOf(thing)}${cureOf(thing)}`);

function launchWith(app) {
  const how = el('input', {
    'aria-label': `How to launch ${nameOf(app)}`,
    value: 'plain',
    size: 12,
    autocomplete: 'off',
  });
  return el(
    'div',
    { class: 'row' },
    button('Restart', () => act('restart', app.name), { class: 'small', 'data-act': 'restart' }),
    button('Stop', () => act('stop', app.name), {
      class: 'small',
      'data-act': 'stop',
      disabled: app.state === 'ended',
    }),
    el(
      'details',
      {},
      el('summary', {}, 'Launch'),
      el(
        'div',
        { class: 'fields' },
        el('label', {}, 'plain, RFID;id;app;type;pict;color;data or ASR;text;semantic', how),
        button('Launch', () => act('launch', app.name, how.value), { class: 'small', 'data-act': 'launch' }),
      ),
    ),
  );
}

function card(app) {
  return el(
    'li',
    {
      class: 'application',
      'data-app': nameOf(app),
      'data-state': app.state,
      'data-hue': hueOf(nameOf(app)),
      'data-calm': app.end && kCalm.has(app.end.kind),
    },
    el(
      'div',
      { class: 'application-head' },
      el('strong', {}, nameOf(app)),
      el('span', { class: 'state', 'data-state': app.state }, kWords[app.state] ?? app.state),
    ),
    el('p', { class: 'empty', 'data-since': app.since }, ''),
    el('p', { class: 'autokill', hidden: true, 'data-until': app.until ?? '' }),
    ...(app.end ? endOf(app.end) : []),
    ...(app.findings ?? []).map(hint),
    ...(app.hints ?? []).map(hint),
    state.mode === 'run' && app.name ? launchWith(app) : null,
  );
}

function since(time, gone) {
  if (!Number.isFinite(time)) return '';
  const passed = Math.max(0, deviceNow() - time);
  const words = passed < 1000 ? 'a moment' : lengthOf(Math.floor(passed / 1000) * 1000).replace('.0', '');
  return gone ? `${words} ago` : `for ${words}`;
}

function tick() {
  for (const line of document.querySelectorAll('[data-since]')) {
    setText(line, since(Number(line.dataset.since), line.parentElement.dataset.state === 'ended'));
  }
  for (const line of document.querySelectorAll('[data-until]')) {
    const left = Math.max(0, Math.ceil((Number(line.dataset.until) - deviceNow()) / 1000));
    line.hidden = line.dataset.until === '';
    if (!line.hidden) setText(line, `Ends by itself in ${left} s`);
  }
}

function tellEnds() {
  for (const app of state.applications) {
    const name = nameOf(app);
    const text = app.state === 'ended' ? (app.end?.sentence ?? 'ended') : '';
    if (text !== '' && ended.get(name) !== text) announce(`${name}: ${text}`);
    ended.set(name, text);
  }
}

function drawChoice() {
  const numbers = (state.view?.applications ?? []).map((app) => app.number);
  const select = byId('for-app');
  const chosen = select.value;
  const named = numbers.map((number) => [
    number,
    state.applications.find((app) => app.number === number)?.name,
  ]);
  replaceWhenNew(select, named, () => [
    el('option', { value: '' }, 'every application'),
    ...named.map(([number, name]) =>
      el('option', { value: number }, name ? `${name} (${number})` : `app ${number}`),
    ),
  ]);
  if (numbers.map(String).includes(chosen)) select.value = chosen;
}

function draw() {
  const list = byId('applications');
  replaceWhenNew(list, state.applications, () =>
    state.applications.length > 0
      ? state.applications.map(card)
      : [el('li', { class: 'empty' }, 'No application is connected.')],
  );
  tellEnds();
  tick();
}

/** The server tells seconds that are left; kept as a time, for they pass. */
export function takeApplications(applications, now) {
  state.applications = (applications ?? []).map(({ autokill, ...app }) =>
    Number.isFinite(autokill) ? { ...app, until: Math.round((now ?? deviceNow()) + autokill * 1000) } : app,
  );
}

export function startApplications() {
  watch(['applications', 'hello'], draw);
  watch(['view', 'applications'], drawChoice);
  setInterval(tick, kTick);
}
