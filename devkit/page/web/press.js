// The button on the head: a click is a press, clicks in a row are a double or triple one, holding is
// a long one. The same with Enter and Space.

import { byId, setFlag } from './dom.js';
import { perform } from './perform.js';

const kBetweenPresses = 320; // milliseconds; a press after that begins anew
const kLong = 650;
const kByCount = [null, 'SIMPLE', 'DOUBLE', 'TRIPLE'];

export const press = (how) => perform('button', [how]);

class Button {
  #element = byId('button');
  #presses = 0;
  #long = false;
  #timer = 0;

  get #isDown() {
    return this.#element.dataset.down !== undefined;
  }

  down() {
    if (this.#isDown) return;
    setFlag(this.#element, 'data-down', true);
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.#hold(), kLong);
  }

  #hold() {
    this.#long = true;
    this.#presses = 0;
    press('LONG_START');
  }

  #tell() {
    press(kByCount[this.#presses] ?? 'MULTIPLE');
    this.#presses = 0;
  }

  up() {
    if (!this.#isDown) return;
    setFlag(this.#element, 'data-down', false);
    clearTimeout(this.#timer);
    if (this.#long) {
      this.#long = false;
      press('LONG_STOP');
      return;
    }
    this.#presses += 1;
    this.#timer = setTimeout(() => this.#tell(), kBetweenPresses);
  }
}

const isKey = (event) => event.key === 'Enter' || event.key === ' ';

function listenToKeys(element, button) {
  element.addEventListener('keydown', (event) => {
    if (!isKey(event)) return;
    event.preventDefault();
    if (!event.repeat) button.down();
  });
  element.addEventListener('keyup', (event) => isKey(event) && button.up());
}

export function makeButton() {
  const element = byId('button');
  const button = new Button();
  element.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    element.setPointerCapture(event.pointerId);
    button.down();
  });
  for (const end of ['pointerup', 'pointercancel', 'blur']) element.addEventListener(end, () => button.up());
  listenToKeys(element, button);
  // A click that no pointer made, as assistive technology does.
  element.addEventListener('click', (event) => event.detail === 0 && press('SIMPLE'));
}
