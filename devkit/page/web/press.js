// The button on the head: a click is a press, clicks in a row are a double or triple one, holding is
// a long one. The same with Enter and Space.

import { byId, setFlag } from './dom.js';
import { perform } from './perform.js';

const kBetweenPresses = 320; // milliseconds; a press after that begins anew
const kLong = 650;
const kByCount = [null, 'SIMPLE', 'DOUBLE', 'TRIPLE'];

export const press = (how) => perform('button', [how]);

export function makeButton() {
  const button = byId('button');
  let presses = 0;
  let long = false;
  let timer = 0;

  function down() {
    if (button.dataset.down !== undefined) return;
    setFlag(button, 'data-down', true);
    clearTimeout(timer);
    timer = setTimeout(() => {
      long = true;
      presses = 0;
      press('LONG_START');
    }, kLong);
  }

  function counted() {
    press(kByCount[presses] ?? 'MULTIPLE');
    presses = 0;
  }

  function up() {
    if (button.dataset.down === undefined) return;
    setFlag(button, 'data-down', false);
    clearTimeout(timer);
    if (long) {
      long = false;
      press('LONG_STOP');
      return;
    }
    presses += 1;
    timer = setTimeout(counted, kBetweenPresses);
  }

  const isKey = (event) => event.key === 'Enter' || event.key === ' ';
  button.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    button.setPointerCapture(event.pointerId);
    down();
  });
  for (const end of ['pointerup', 'pointercancel', 'blur']) button.addEventListener(end, up);
  button.addEventListener('keydown', (event) => {
    if (!isKey(event)) return;
    event.preventDefault();
    if (!event.repeat) down();
  });
  button.addEventListener('keyup', (event) => isKey(event) && up());
  // A click that no pointer made, as assistive technology does.
  button.addEventListener('click', (event) => event.detail === 0 && press('SIMPLE'));
}
