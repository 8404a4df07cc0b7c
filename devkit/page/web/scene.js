// The whole picture: drawn when the view is another one, and in every frame while something moves.

import { runBubbles, showBubbles } from './bubbles.js';
import { deviceNow } from './clock.js';
import { showDock } from './dock.js';
import { byId, setFlag, setText } from './dom.js';
import { makeEars } from './ears.js';
import { animate } from './frame.js';
import { makeLeds } from './led.js';
import { runPlayer, showPlayer } from './player.js';
import { makeButton } from './press.js';
import { showSeen } from './seen.js';
import { state, watch } from './store.js';
import { deviceOf } from './view.js';

const kCaption = 10; // letters below a photo, and the units that they take at most
const kCaptionWidth = 68;

let device = null;
let ears = null;
let leds = null;

function showCaption(name) {
  const caption = byId('photo-text');
  setText(caption, name.slice(0, kCaption));
  setFlag(caption, 'textLength', name.length >= kCaption ? kCaptionWidth : null);
  setFlag(caption, 'lengthAdjust', name.length >= kCaption ? 'spacingAndGlyphs' : null);
}

function showMarks() {
  const drawing = byId('device');
  setFlag(drawing, 'data-speaks', device.speech.active);
  setFlag(drawing, 'data-listens', device.listening.active);
  setFlag(drawing, 'data-plays', device.player.mode === 'playing');
  setFlag(drawing, 'data-record', device.record.active);
  setFlag(drawing, 'data-photo', device.photo.active);
  setFlag(drawing, 'data-call', device.calls.at(-1)?.state);
  setFlag(byId('led'), 'data-color', device.led.color);
  setFlag(byId('led'), 'data-effect', device.led.asked);
  setFlag(byId('dock-led'), 'data-color', device.dockLed.color);
  setFlag(byId('dock'), 'data-moving', device.dock.active ? device.dock.moving : 'STOP');
  setFlag(
    byId('cable'),
    'data-open',
    device.ports.some((port) => port.open),
  );
  setFlag(byId('photo'), 'data-on', device.photo.name !== '');
  showCaption(device.photo.name);
  setFlag(byId('mail'), 'data-on', device.unread > 0);
  setText(byId('mail-text'), Math.min(99, device.unread));
}

/** Draws this moment. Gives whether the next one will look different. */
function step() {
  if (device === null) return false;
  const now = deviceNow();
  const moving = [
    leds(device, now),
    ears.show(device, now),
    showDock(device, now),
    runBubbles(device, now),
    runPlayer(device, now),
  ];
  return moving.includes(true);
}

function draw() {
  if (state.view === null) return;
  device = deviceOf(state.view);
  showMarks();
  showBubbles(device);
  showPlayer(device);
  showSeen(device);
  animate(step);
}

/** The tag that lies on the reader, or null: the page's own, for the device remembers none. */
export function showTag(tag) {
  setFlag(byId('tag'), 'data-on', tag !== null);
  if (tag) setText(byId('tag-text'), (tag.name || tag.id).slice(0, 8));
}

export function startScene() {
  leds = makeLeds();
  ears = makeEars(draw);
  makeButton();
  watch(['view', 'applications'], draw);
  return ears;
}
