// The dock: its wheels turn and the floor passes by while it moves.

import { byId, setFlag } from './dom.js';
import { calm } from './frame.js';

const kWays = { LEFT: [-1, 0], RIGHT: [1, 0], UP: [0, -0.5], DOWN: [0, 0.5] };
const kLean = 22; // units that the device is off its place while it moves
const kEase = 260; // milliseconds to get there
const kSpeed = 0.09; // units in a millisecond
const kTile = [44, 22]; // the pattern of the floor

let turned = 0;
let floor = [0, 0];
let before = 0;

// 0 at both ends of a movement and 1 in between.
function lean(dock, now) {
  const passed = now - dock.begin;
  const left = dock.length - passed;
  return Math.max(0, Math.min(1, passed / kEase, left / kEase));
}

function place([x, y], much, passed) {
  turned = (turned + (x || -y * 2) * passed * 0.3) % 360;
  floor = floor.map((at, i) => (at - [x, y][i] * kSpeed * passed) % kTile[i]);
  setFlag(
    byId('mover'),
    'transform',
    `translate(${(x * kLean * much).toFixed(1)} ${(y * kLean * much).toFixed(1)})`,
  );
  setFlag(byId('floor'), 'transform', `translate(${floor[0].toFixed(1)} ${floor[1].toFixed(1)})`);
  for (const wheel of ['wheel-1', 'wheel-2']) byId(wheel).style.transform = `rotate(${turned.toFixed(1)}deg)`;
}

export function showDock(device, now) {
  const { dock } = device;
  const way = kWays[dock.moving];
  const moves = way !== undefined && now < dock.begin + dock.length;
  for (const arrow of document.querySelectorAll('[data-arrow]')) {
    setFlag(arrow, 'data-on', moves && arrow.dataset.arrow === dock.moving);
  }
  const passed = Math.min(100, Math.max(0, now - before));
  before = now;
  if (!calm()) place(way ?? [0, 0], moves ? lean(dock, now) : 0, moves ? passed : 0);
  return moves;
}
