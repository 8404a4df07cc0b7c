// What a screen reader is told: the few things that matter, at most one every two seconds.

import { byId } from './dom.js';

const kPause = 2000;
const kMostWaiting = 4;
let waiting = [];
let busy = false;

function next() {
  busy = waiting.length > 0;
  if (!busy) return;
  byId('announcer').textContent = waiting.join('. ');
  waiting = [];
  setTimeout(next, kPause);
}

export function announce(text) {
  waiting.push(text);
  if (waiting.length > kMostWaiting) waiting.shift();
  if (!busy) next();
}
