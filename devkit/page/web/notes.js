// What happened beside the messages: who came and went, what the world did, doubts and trouble.

import { announce } from './announce.js';
import { lengthOf, timeOfDay } from './clock.js';
import { el } from './dom.js';
import { List } from './list.js';
import { hueOf, nameOf } from './names.js';
import { Kept } from './store.js';

const kept = new Kept();
let list = null;
let works = false;

function argumentsOf(values = {}) {
  return Object.values(values)
    .flat()
    .map((value) =>
      typeof value === 'object' ? JSON.stringify(value) : /\s/.test(value) ? `"${value}"` : String(value),
    )
    .join(' ');
}

const kWords = {
  came: () => 'came',
  left: () => 'left',
  began: ({ work, length }) => `${work} begins${length === undefined ? '' : `, for ${lengthOf(length)}`}`,
  ended: ({ work, code }) => `${work} is over${code ? `: ${code}` : ''}`,
  stimulus: ({ name, arguments: values }) => `${name} ${argumentsOf(values)}`.trim(),
};

/** Any event but a message or a change. */
export function addNote(event) {
  const text = kWords[event.event]?.(event) ?? event.text ?? JSON.stringify(event);
  kept.add({ time: event.time, kind: event.event, app: event.application, text });
  if (event.event === 'trouble' || event.event === 'doubt') announce(text);
  list.grown();
}

const kSigns = { came: '+', left: '−', stimulus: '»', began: '▸', ended: '▪', trouble: '×', doubt: '?' };
const whoOf = (row) => (row.app === undefined ? '' : nameOf(row.app));

function make(row) {
  return el(
    'div',
    { class: 'line', 'data-kind': row.kind },
    el('span', { class: 'time' }, timeOfDay(row.time)),
    el('span', { class: 'who', 'data-hue': hueOf(whoOf(row)) }, whoOf(row)),
    el(
      'span',
      { class: 'what' },
      el('span', { 'aria-hidden': 'true' }, `${kSigns[row.kind] ?? '–'} `),
      row.text,
    ),
  );
}

export function clearNotes() {
  kept.clear();
  kept.total = 0;
  list.rebuild();
}

export function notesTab() {
  const box = el('input', {
    type: 'checkbox',
    onchange: () => {
      works = box.checked;
      list.rebuild();
    },
  });
  list = new List({
    name: 'notes',
    label: 'notes',
    kept,
    make,
    tools: [el('label', {}, box, 'What begins and ends')],
    fits: (row) => works || (row.kind !== 'began' && row.kind !== 'ended'),
    text: (row) => `${timeOfDay(row.time)} ${whoOf(row)} ${row.kind} ${row.text}`,
  });
  return { name: 'notes', label: 'Notes', panel: list.panel, shown: list.draw };
}
