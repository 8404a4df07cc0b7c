// The applications: how each is, and why one has ended.

import { announce } from './announce.js';
import { deviceNow, lengthOf } from './clock.js';
import { button, byId, el, marked, replaceWhenNew, setFlag, setText } from './dom.js';
import { hueOf, rememberNames } from './names.js';
import { act } from './perform.js';
import { state, watch } from './store.js';

const kTick = 500; // milliseconds
const kRounding = 1500;
const kWords = {
  started: 'started',
  connected: 'connected',
  waiting: 'waits for interactive mode',
  interactive: 'interactive',
  stopping: 'stops',
  ended: 'ended',
};
// Ends that somebody wanted.
const kCalm = new Set(['left', 'script-exit', 'restarted', 'quit', 'told-to-end']);
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
    el('p', { class: 'why' }, el('strong', {}, marked(end.sentence ?? end.kind))),
    end.cure ? el('p', { class: 'cure' }, marked(end.cure)) : null,
    end.headline ? el('p', { class: 'headline' }, end.headline) : null,
    lastLines(end.lines),
  ];
}

// What a real device may not do for it; the device tells that by number.
const doubtsOf = ({ number }) =>
  (number === null ? [] : (state.view?.applications ?? []))
    .filter((app) => app.number === number)
    .flatMap((app) => app.doubts ?? []);

const doubt = ({ about, text }) => el('p', { class: 'hint', 'data-doubt': about }, `? ${text}`);

// A finding of the check, or a hint at what happened.
const warning = (kind) => (thing) =>
  el('p', { class: 'hint', [`data-${kind}`]: '' }, '⚠ ', marked(textOf(thing) + cureOf(thing)));

function launchWith(app) {
  const how = el('input', {
    list: 'launches',
    'aria-label': `How to launch ${nameOf(app)}`,
    value: 'plain',
    size: 12,
    autocomplete: 'off',
  });
  return el(
    'div',
    { class: 'row' },
    button('Restart', () => act('restart', app.name), { class: 'small', 'data-act': 'restart' }),
    button('Stop', () => act('stop', app.name), { class: 'small', 'data-act': 'stop' }),
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

// In a pause of a debugger an application hears nothing, whatever its state.
const stateOf = (app) => (app.paused ? `paused ${app.paused}` : (kWords[app.state] ?? app.state));

function about(app) {
  return [
    el(
      'div',
      { class: 'application-head' },
      el('strong', {}, nameOf(app)),
      el('span', { class: 'state', 'data-state': app.state }, stateOf(app)),
    ),
    el('p', { class: 'empty', 'data-since': app.since }),
    el('p', { class: 'autokill', hidden: true }),
    ...(app.end ? endOf(app.end) : []),
    ...(app.findings ?? []).map(warning('finding')),
    ...(app.hints ?? []).map(warning('hint')),
    ...app.doubts.map(doubt),
  ];
}

// What is told of an application is drawn anew, and its buttons are not: somebody may be at them.
function cardFor(app) {
  const name = nameOf(app);
  const told = el('div', { class: 'application-about' });
  const card = el('li', { class: 'application', 'data-app': name, 'data-hue': hueOf(name) }, told);
  if (state.mode !== 'device' && app.name) card.append(launchWith(app));
  card.show = ({ until = '', ...now }) => {
    setFlag(card, 'data-state', now.state);
    setFlag(card, 'data-paused', Boolean(now.paused));
    setFlag(card, 'data-calm', now.end !== null && kCalm.has(now.end?.kind));
    replaceWhenNew(told, now, () => about(now));
    card.querySelector('.autokill').dataset.until = until;
    const stop = card.querySelector('[data-act="stop"]');
    if (stop) stop.disabled = now.state === 'ended';
  };
  return card;
}

function since(time, gone) {
  if (!Number.isFinite(time)) return '';
  const passed = Math.max(0, deviceNow() - time);
  const words = passed < 1000 ? 'a moment' : lengthOf(Math.floor(passed / 1000) * 1000).replace('.0', '');
  return gone ? `${words} ago` : `for ${words}`;
}

function tick() {
  for (const line of document.querySelectorAll('[data-since]')) {
    setText(line, since(Number(line.dataset.since), line.closest('.application').dataset.state === 'ended'));
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

const kNobody = () => el('li', { class: 'empty' }, 'No application is connected.');
const cards = new Map(); // by name and number
let drawnDoubts = '[]';

// A name may come more than once.
function keyFor(app) {
  let key = `${nameOf(app)} ${app.number ?? ''}`;
  while (cards.has(key)) key += "'";
  return key;
}

function cardsNow() {
  const old = new Map(cards);
  cards.clear();
  for (const app of state.applications) {
    const key = keyFor(app);
    const card = old.get(key) ?? cardFor(app);
    card.show({ ...app, doubts: doubtsOf(app) });
    cards.set(key, card);
  }
  return cards.size > 0 ? [...cards.values()] : [kNobody()];
}

function drawDoubts() {
  const now = JSON.stringify(state.applications.map(doubtsOf));
  if (now !== drawnDoubts) draw();
}

function draw() {
  drawnDoubts = JSON.stringify(state.applications.map(doubtsOf));
  const list = byId('applications');
  const now = cardsNow();
  if (now.length !== list.children.length || now.some((card, i) => card !== list.children[i])) {
    list.replaceChildren(...now);
  }
  tellEnds();
  tick();
}

// The seconds that are left come rounded, so a time that moves a little is still the same.
function untilOf(autokill, now, before) {
  const until = now + autokill * 1000;
  return before !== undefined && Math.abs(until - before) < kRounding ? before : until;
}

/** The server tells seconds that are left; kept as a time, for they pass. */
export function takeApplications(applications, now = deviceNow()) {
  rememberNames(applications ?? []);
  for (const app of applications ?? []) hueOf(nameOf(app)); // in this order, on every page
  const before = new Map(state.applications.map((app) => [nameOf(app), app.until]));
  state.applications = (applications ?? []).map(({ autokill, ...app }) =>
    Number.isFinite(autokill) ? { ...app, until: untilOf(autokill, now, before.get(nameOf(app))) } : app,
  );
}

export function startApplications() {
  watch(['applications', 'hello'], draw);
  watch(['view'], drawDoubts);
  watch(['view', 'applications'], drawChoice);
  setInterval(tick, kTick);
}
