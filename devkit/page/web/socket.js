// The one connection to the server: frames in, requests out. Comes back by itself, says what it has
// seen, and matches outcomes to requests.

import { forgetClock, hearClock } from './clock.js';

const kAcknowledgeEvery = 50; // frames
const kAcknowledgeWithin = 200; // milliseconds
const kFirstPause = 250;
const kLongestPause = 5000;
const kPatience = 10000; // for an outcome

let socket = null;
let hearers = null;
let pause = kFirstPause;
let retry = 0;
let failures = 0;
let lastRequest = 0;
let seen = 0;
let told = 0;
let toldAt = 0;
let tellLater = 0;
const open = new Map(); // requests without an outcome, by id

function acknowledge() {
  clearTimeout(tellLater);
  tellLater = 0;
  if (seen === told || socket?.readyState !== WebSocket.OPEN) return;
  told = seen;
  toldAt = performance.now();
  socket.send(JSON.stringify({ type: 'seen', seq: seen }));
}

function count(seq) {
  if (!Number.isFinite(seq)) return;
  seen = seq;
  if (seen - told >= kAcknowledgeEvery || performance.now() - toldAt >= kAcknowledgeWithin) {
    acknowledge();
  } else if (tellLater === 0) {
    tellLater = setTimeout(acknowledge, kAcknowledgeWithin);
  }
}

function settle(id, outcome) {
  const request = open.get(id);
  if (!request) return;
  open.delete(id);
  clearTimeout(request.timer);
  request.resolve(outcome);
}

function receive(event) {
  let frame;
  try {
    frame = JSON.parse(event.data);
  } catch {
    return; // the next frame may be better
  }
  if (frame.type === 'hello') {
    forgetClock();
    pause = kFirstPause;
    failures = 0;
  }
  hearClock(frame.now);
  if (frame.type === 'outcome') settle(frame.id, frame);
  hearers.frame(frame);
  count(frame.seq);
}

const kTooMany = 4000; // pages that are open, as the server closes one

function lost({ code }) {
  socket = null;
  clearTimeout(tellLater);
  tellLater = 0;
  for (const id of [...open.keys()]) settle(id, { done: false, text: 'the connection was lost' });
  failures += 1;
  hearers.lost(code === kTooMany ? 'Too many pages are open, trying again' : '', failures);
  retry = setTimeout(connect, pause);
  pause = Math.min(pause * 1.7, kLongestPause);
}

function connect() {
  clearTimeout(retry);
  const address = new URL('socket', location.href);
  address.protocol = address.protocol === 'https:' ? 'wss:' : 'ws:';
  seen = told = 0;
  socket = new WebSocket(address);
  socket.addEventListener('message', receive);
  socket.addEventListener('close', lost);
}

function hurry() {
  if (document.visibilityState === 'visible' && socket === null) connect();
}

/** `hearers.frame` gets each frame, `hearers.lost` the reason, if one is
 * known, and the number of attempts. */
export function startSocket(theHearers) {
  hearers = theHearers;
  document.addEventListener('visibilitychange', hurry);
  window.addEventListener('online', hurry);
  connect();
}

/** Sends a request. The promise gives its outcome, {done, text}, and never fails. */
export function request(type, content) {
  if (socket?.readyState !== WebSocket.OPEN) {
    return Promise.resolve({ done: false, text: 'There is no connection at the moment.' });
  }
  const id = ++lastRequest;
  return new Promise((resolve) => {
    const late = () => settle(id, { done: false, text: 'No answer within ten seconds.' });
    open.set(id, { resolve, timer: setTimeout(late, kPatience) });
    socket.send(JSON.stringify({ type, id, ...content }));
  });
}
