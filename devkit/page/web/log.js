// The log by application, with levels, and what the tool tells between the lines; lines that say nothing
// to an author are folded.

import { timeOfDay } from './clock.js';
import { choice, el, setText } from './dom.js';
import { List } from './list.js';
import { hueOf } from './names.js';
import { Kept, state, watch } from './store.js';

const kRanks = { DEBUG: 0, INFO: 1, MESSAGE: 2, OUTPUT: 2, WARNING: 3, FATAL: 4 };
const kMessages = 2;
const kLevels = [
  [String(kMessages), 'Messages and worse'],
  ['0', 'All levels'],
  ['3', 'Warnings and worse'],
  ['4', 'Fatal'],
];

// What applications and the host say; anything else is told by the tool, and no level leaves it out.
const kLines = new Set(['script', 'host', 'foreign', 'noise']);

const kept = new Kept();
let list = null;
let folded = 0;
let filter = { least: kMessages, app: '', noise: false, scriptOnly: false };

const isTold = (row) => !kLines.has(row.kind);
const rankOf = (row) => kRanks[row.level] ?? kMessages;

// The same words as in the terminal.
const markOf = (row) => (row.kind === 'script' ? 'log' : isTold(row) ? row.kind : row.level.toLowerCase());

/** Lines of the log: {time, app, level, kind, text}. */
export function addLines(lines) {
  for (const { time, app = '', level = '', kind = 'host', text = '' } of lines) {
    if (kind === 'noise') folded += 1;
    kept.add({ time, app, level, kind, text, faint: level === 'DEBUG' || kind === 'noise' });
  }
  list.grown();
}

function fits(row) {
  if (row.kind === 'noise' && !filter.noise) return false;
  if (filter.app !== '' && row.app !== filter.app) return false;
  if (filter.scriptOnly && row.kind !== 'script') return false;
  return isTold(row) || rankOf(row) >= filter.least;
}

function make(row) {
  return el(
    'div',
    { class: 'line', 'data-kind': row.kind, 'data-level': row.level },
    el('span', { class: 'time', title: `${row.level} ${row.kind}` }, timeOfDay(row.time)),
    el('span', { class: 'who', 'data-hue': hueOf(row.app) }, row.app),
    el('span', { class: 'what' }, isTold(row) ? el('span', { class: 'mark' }, row.kind) : null, row.text),
  );
}

export function clearLog() {
  kept.clear();
  kept.total = folded = 0;
  list.rebuild();
}

export function missLines(number, time) {
  kept.missed += number;
  addLines([{ time, level: 'WARNING', kind: 'gap', text: `${number} lines were left out here` }]);
}

/** So many were there before the first. */
export function forgetLines(number) {
  kept.gone += number;
  list.grown();
}

function narrow(change) {
  filter = { ...filter, ...change };
  list.rebuild();
}

function check(label, name) {
  const box = el('input', { type: 'checkbox', onchange: () => narrow({ [name]: box.checked }) });
  const text = el('span', {}, label);
  return { text, element: el('label', {}, box, text) };
}

function apps() {
  const select = choice([['', 'All applications']], {
    'aria-label': 'Application',
    onchange: () => narrow({ app: select.value }),
  });
  watch(['applications'], () => {
    const names = [...new Set(state.applications.map((app) => app.name ?? `app ${app.number}`))];
    for (const name of names) {
      if (![...select.options].some((option) => option.value === name))
        select.append(el('option', { value: name }, name));
    }
  });
  return select;
}

export function logTab() {
  const levels = choice(kLevels, {
    'aria-label': 'Level',
    onchange: () => narrow({ least: Number(levels.value) }),
  });
  const noise = check('Say-nothing lines', 'noise');
  const script = check('Script only', 'scriptOnly');
  list = new List({
    name: 'log',
    label: 'log',
    kept,
    make,
    fits,
    tools: [levels, apps(), script.element, noise.element],
    text: (row) => `${timeOfDay(row.time)} ${row.app} ${markOf(row)} ${row.text}`,
    cleared: () => {
      folded = 0;
    },
    count: () => {
      setText(noise.text, `${folded} that say nothing`);
      return '';
    },
  });
  return { name: 'log', label: 'Log', panel: list.panel, shown: list.draw };
}
