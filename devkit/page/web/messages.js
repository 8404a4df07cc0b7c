// Every message as it passes; requests and answers are joined by their ids, with the time between.

import { lengthOf, timeOfDay } from './clock.js';
import { button, choice, el } from './dom.js';
import { redraw } from './frame.js';
import { List } from './list.js';
import { hueOf, nameOf } from './names.js';
import { Kept } from './store.js';

const kSigns = { received: '→', sent: '←' };
const kWays = { received: 'from the application', sent: 'to the application' };

const kept = new Kept();
const requests = new Map(); // rows that an answer may come for, by application and id
const touched = new Set(); // rows that are drawn already and have changed
let list = null;
let only = '';

const kMostAnswers = 10; // that are shown at a request; more are counted

// Codes that tell that something went wrong.
const kBad = new Set(['ERROR', 'TIMEOUT', 'CANCELLED', 'BUSY', 'BAD_INTERACTIVEID', 'NOT_CONNECTED']);
const isBad = (message) => kBad.has(message.response?.code ?? message.event?.code);

const keyOf = (app, id) => `${app} ${id}`;

function forget(row) {
  if (row === null) return;
  const key = keyOf(row.app, row.message.id);
  if (requests.get(key) === row) requests.delete(key);
}

// An answer is shown at its request as well.
function join(row) {
  const request = requests.get(keyOf(row.app, row.message.correlationId));
  if (!request || request === row) return;
  row.request = request;
  row.took = row.time - request.time;
  request.count += 1;
  if (request.count <= kMostAnswers) request.answers.push(row);
  if (!request.element) return;
  touched.add(request);
  redraw(refresh);
}

/** A message that passed: an event "received" or "sent". */
export function addMessage({ time, event, application, message = {}, words = '' }) {
  const row = {
    time,
    way: event,
    app: application,
    message,
    words,
    answers: [],
    count: 0,
  };
  if (event === 'received' && message.id) requests.set(keyOf(application, message.id), row);
  if (message.correlationId) join(row);
  forget(kept.add(row));
  list.grown();
}

// A request tells when its first answer came, and how many more there were; an answer, how long it took.
function took(row) {
  if (row.took !== undefined) return ['came after ', lengthOf(row.took), ''];
  const first = row.answers[0];
  if (!first) return ['', '', ''];
  const more = row.count - 1;
  return ['answered in ', lengthOf(first.took), more > 0 ? ` +${more}` : ''];
}

const tookInWords = (row) => took(row).join('');

function tookOf(row) {
  const [words, length, more] = took(row);
  return el(
    'span',
    { class: 'took', title: tookInWords(row) },
    el('span', { class: 'hidden' }, words),
    length + more,
  );
}

function goTo(row) {
  const { element } = row;
  if (!element?.isConnected) return;
  open(row, true);
  element.classList.add('found');
  setTimeout(() => element.classList.remove('found'), 2000);
  element.firstElementChild.focus();
  element.scrollIntoView({ block: 'nearest' });
}

const link = (text, row) => button(`${text}: ${row.words.slice(0, 60)}`, () => goTo(row), { class: 'small' });

function inside(row) {
  const joined = [
    row.request ? link(`Answers, ${lengthOf(row.took)} later, the request`, row.request) : null,
    ...row.answers.map((answer) => link(`Answered after ${lengthOf(answer.took)}`, answer)),
  ].filter(Boolean);
  return el(
    'div',
    { class: 'inside' },
    el('div', { class: 'row joined' }, joined),
    el('pre', {}, JSON.stringify(row.message, null, 2)),
  );
}

// The whole message stands below its line while it is open.
function open(row, wanted) {
  const [line, below] = row.element.children;
  below?.remove();
  line.setAttribute('aria-expanded', String(wanted));
  if (wanted) row.element.append(inside(row));
}

const isOpen = (row) => row.element.children.length > 1;

function make(row) {
  const name = nameOf(row.app);
  row.element = el(
    'div',
    {
      class: 'message',
      'data-way': row.way,
      'data-id': row.message.id,
      'data-correlation': row.message.correlationId,
      'data-code': isBad(row.message) ? 'bad' : null,
    },
    el(
      'button',
      { type: 'button', tabindex: -1, 'aria-expanded': 'false', onclick: () => open(row, !isOpen(row)) },
      el('span', { class: 'time' }, timeOfDay(row.time)),
      el(
        'span',
        { class: 'way', title: kWays[row.way], role: 'img', 'aria-label': kWays[row.way] },
        kSigns[row.way],
      ),
      el('span', { class: 'who', 'data-hue': hueOf(name) }, name),
      el('span', { class: 'what' }, row.words),
      tookOf(row),
    ),
  );
  return row.element;
}

function refresh() {
  for (const row of touched) {
    if (!row.element) continue;
    row.element.querySelector('.took').replaceWith(tookOf(row));
    if (isOpen(row)) open(row, true);
  }
  touched.clear();
}

// Arrow keys go from message to message.
function walk(event) {
  const steps = { ArrowDown: 'nextElementSibling', ArrowUp: 'previousElementSibling' };
  if (!(event.key in steps)) return;
  const at = event.target.closest('.message');
  const next = at
    ? at[steps[event.key]]
    : list.rows[event.key === 'ArrowDown' ? 'firstElementChild' : 'lastElementChild'];
  if (!next) return;
  event.preventDefault();
  next.firstElementChild.focus();
}

export function clearMessages() {
  kept.clear();
  kept.total = 0;
  requests.clear();
  list.rebuild();
}

export function missMessages(number) {
  kept.missed += number;
  list.grown();
}

/** So many were there before the first. */
export function forgetMessages(number) {
  kept.gone += number;
  list.grown();
}

export function messagesTab() {
  const ways = choice(
    [
      ['', 'Both ways'],
      ['received', 'From applications'],
      ['sent', 'To applications'],
    ],
    { 'aria-label': 'Which way' },
  );
  list = new List({
    name: 'messages',
    label: 'messages',
    kept,
    make,
    tools: [ways],
    fits: (row) => only === '' || row.way === only,
    text: (row) =>
      `${timeOfDay(row.time)} ${kSigns[row.way]} ${nameOf(row.app)} ${row.words} ${tookInWords(row)} ${JSON.stringify(row.message)}`,
    cleared: () => requests.clear(),
  });
  ways.addEventListener('change', () => {
    only = ways.value;
    list.rebuild();
  });
  list.rows.addEventListener('keydown', walk);
  return { name: 'messages', label: 'Messages', panel: list.panel, shown: list.draw };
}
