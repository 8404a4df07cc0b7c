// The ears: they turn over the time that the device takes, and can be taken and turned.

import { byId, drawn, setFlag } from './dom.js';
import { calm } from './frame.js';
import { perform } from './perform.js';
import { deviceNow } from './clock.js';

const kLastStep = 16;
const kDegreesOfAStep = 10;
const kDegreesAtFirst = 8;
const kPivot = { x: 148, y: 204 };
const kScale = 146; // how far the dots are from the joint
const kFastest = 0.04; // steps in a millisecond, where the device jumps
const kBigStep = 4;
const kGrace = 400; // milliseconds

const within = (step) => Math.min(kLastStep, Math.max(0, step));
const degrees = (step) => kDegreesAtFirst + step * kDegreesOfAStep;

/** Where an ear is at a time: {from, to, begin, stepTime}, or from = to when it rests. */
function stepAt(ear, now) {
  const way = Math.max(0, (now - ear.begin) / ear.stepTime);
  return way >= Math.abs(ear.to - ear.from) ? ear.to : ear.from + Math.sign(ear.to - ear.from) * way;
}

class Ear {
  constructor(side, redraw) {
    this.redraw = redraw;
    this.side = side;
    this.left = side === 'left';
    this.x = this.left ? kPivot.x : 480 - kPivot.x;
    this.element = byId(`ear-${side}`);
    this.turned = byId(`turn-${side}`);
    this.shown = null; // the step that is drawn, with its fraction
    this.held = null; // where a hand holds it
    this.wanted = null; // the step that the hand last asked for
    this.sending = false;
    this.#place();
    this.#listen();
  }

  #place() {
    this.element.setAttribute('transform', `translate(${this.x} ${kPivot.y})`);
    this.dots = Array.from({ length: kLastStep + 1 }, (_, step) => {
      const angle = (degrees(step) * Math.PI) / 180;
      const side = this.left ? -1 : 1;
      return drawn('circle', { r: 3, cx: side * Math.sin(angle) * kScale, cy: -Math.cos(angle) * kScale });
    });
    byId(`scale-${this.side}`).append(...this.dots);
  }

  #listen() {
    this.element.addEventListener('pointerdown', (event) => this.#take(event));
    this.element.addEventListener('pointermove', (event) => this.#follow(event));
    for (const end of ['pointerup', 'pointercancel']) this.element.addEventListener(end, () => this.#letGo());
    this.element.addEventListener('keydown', (event) => this.#key(event));
  }

  #take(event) {
    this.element.setPointerCapture(event.pointerId);
    this.element.focus({ preventScroll: true });
    event.preventDefault();
    this.grip = null;
    this.#follow(event, true);
    setFlag(this.element, 'data-held', true);
  }

  // An ear that is gripped beside its middle stays that much beside the pointer.
  #follow(event, first = false) {
    if (!first && this.held === null) return;
    const point = new DOMPoint(event.clientX, event.clientY).matrixTransform(
      this.element.ownerSVGElement.getScreenCTM().inverse(),
    );
    const away = (this.left ? -1 : 1) * (point.x - this.x);
    let angle = (Math.atan2(away, kPivot.y - point.y) * 180) / Math.PI;
    if (angle < -90) angle += 360;
    const pointed = (angle - kDegreesAtFirst) / kDegreesOfAStep;
    this.grip ??= pointed - (this.shown ?? 0);
    this.held = within(pointed - this.grip);
    if (!first) this.turn(Math.round(this.held));
    this.draw(this.held);
  }

  #letGo() {
    this.held = null;
    setFlag(this.element, 'data-held', false);
    this.redraw();
  }

  #key(event) {
    const now = this.wanted ?? this.target;
    const steps = {
      ArrowUp: now + 1,
      ArrowRight: now + 1,
      ArrowDown: now - 1,
      ArrowLeft: now - 1,
      PageUp: now + kBigStep,
      PageDown: now - kBigStep,
      Home: 0,
      End: kLastStep,
    };
    if (event.key.toLowerCase() === 'b' && !event.ctrlKey && !event.metaKey) this.block();
    if (!(event.key in steps)) return;
    event.preventDefault();
    this.turn(within(steps[event.key]));
  }

  block() {
    return perform('ears', [`BLOCKED_${this.side.toUpperCase()}`, Math.round(this.shown ?? 0)]);
  }

  /** Turns it by hand; while one turn is on its way only the last of the next ones counts. */
  async turn(step) {
    if (step === (this.wanted ?? this.target)) return;
    this.wanted = step;
    this.redraw();
    if (this.sending) return;
    this.sending = true;
    const done = await this.#send();
    this.sending = false;
    if (!done) this.wanted = null;
    // The view that shows it comes a moment later.
    setTimeout(() => this.#settle(), kGrace);
    this.redraw();
  }

  async #send() {
    let last = null;
    let outcome = null;
    while (this.wanted !== last) {
      last = this.wanted;
      outcome = await perform('ear', [this.side.toUpperCase(), last]);
    }
    return outcome.done;
  }

  #settle() {
    if (!this.sending) this.wanted = null;
    this.redraw();
  }

  draw(step) {
    this.shown = step;
    const angle = (this.left ? -1 : 1) * degrees(step);
    setFlag(this.turned, 'transform', `rotate(${angle.toFixed(2)})`);
  }

  show(ear, now, passed) {
    this.target = ear.to;
    if (!this.sending && this.wanted === ear.to) this.wanted = null;
    const arrived = this.#approach(ear, now, passed);
    const value = Math.round(this.held ?? this.wanted ?? stepAt(ear, now));
    setFlag(this.element, 'aria-valuenow', value);
    setFlag(
      this.element,
      'aria-valuetext',
      value === (this.wanted ?? ear.to) ? `step ${value} of 16` : `turning to step ${ear.to}`,
    );
    this.dots.forEach((dot, step) => setFlag(dot, 'data-on', step === value));
    return !arrived;
  }

  #approach(ear, now, passed) {
    if (this.held !== null) return true;
    const target = this.wanted ?? (calm() ? ear.to : stepAt(ear, now));
    const most = this.shown === null || calm() ? Infinity : passed * kFastest;
    const way = target - (this.shown ?? target);
    this.draw((this.shown ?? target) + Math.sign(way) * Math.min(Math.abs(way), most));
    return this.shown === (this.wanted ?? ear.to);
  }
}

export function makeEars(redraw) {
  const ears = { left: new Ear('left', redraw), right: new Ear('right', redraw) };
  let before = deviceNow();
  const show = (device, now) => {
    const passed = Math.min(100, Math.max(0, now - before));
    before = now;
    const leftMoves = ears.left.show(device.ears.left, now, passed);
    return ears.right.show(device.ears.right, now, passed) || leftMoves;
  };
  return { show, block: (side) => ears[side].block(), turn: (side, step) => ears[side].turn(step) };
}
