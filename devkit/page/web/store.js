// What the page knows: the device as it was last told, and bounded lists of what happened.

import { redraw } from './frame.js';

const kMostRows = 2000;

/**
 * The newest rows of a list, with those that are faint giving way before others. Rows are numbered from
 * 1; `total` is the number of the last.
 */
export class Kept {
  rows = [];
  total = 0;
  gone = 0; // no longer kept
  missed = 0; // left out by the server, for this page did not keep up
  #faint = 0; // rows that are

  /** Gives the row that had to go for it, if any. */
  add(row) {
    row.serial = ++this.total;
    this.rows.push(row);
    if (row.faint) this.#faint += 1;
    if (this.rows.length <= kMostRows) return null;
    this.gone += 1;
    return this.#takeOne();
  }

  #takeOne() {
    if (this.#faint === 0) return this.rows.shift();
    this.#faint -= 1;
    const at = this.rows.findIndex((row) => row.faint);
    return this.rows.splice(at, 1)[0];
  }

  clear() {
    this.rows = [];
    this.gone = this.missed = this.#faint = 0;
  }
}

export const state = {
  connection: 'connecting',
  mode: 'device',
  title: '',
  view: null,
  applications: [],
  stimuli: [],
  tags: [],
};

const watchers = new Map();

/** Calls `draw` in a frame after a part has changed: "view", "applications", "hello", ... */
export function watch(parts, draw) {
  for (const part of parts) watchers.set(part, [...(watchers.get(part) ?? []), draw]);
}

export function changed(part) {
  for (const draw of watchers.get(part) ?? []) redraw(draw);
}
