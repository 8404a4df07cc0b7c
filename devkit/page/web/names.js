// Applications by number, name and colour.

import { state } from './store.js';

const kHues = 6;
const hues = new Map();

/** The application with this number, as far as the server tells of it. */
const applicationOf = (number) => state.applications.find((app) => app.number === number);

export const nameOf = (number) => applicationOf(number)?.name ?? `app ${number}`;

/** A small number that stands for the colour of a name, in the order in which names appear. */
export function hueOf(name) {
  if (hues.size > 1000) hues.clear();
  if (!hues.has(name)) hues.set(name, hues.size % kHues);
  return hues.get(name);
}
