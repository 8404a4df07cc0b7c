// Drawing once per frame, however much arrives in between. A page that nobody sees draws nothing.

const waiting = new Set();
const moving = new Set();
let asked = false;

function ask() {
  if (asked) return;
  asked = true;
  requestAnimationFrame(turn);
}

function turn() {
  asked = false;
  const draws = [...waiting];
  waiting.clear();
  for (const draw of draws) draw();
  for (const step of [...moving]) if (!step()) moving.delete(step);
  if (waiting.size > 0 || moving.size > 0) ask();
}

/** Calls `draw` once in the next frame, however often it is asked for. */
export function redraw(draw) {
  waiting.add(draw);
  ask();
}

/** Calls `step` in every frame for as long as it returns true. */
export function animate(step) {
  moving.add(step);
  ask();
}

const query = matchMedia('(prefers-reduced-motion: reduce)');

/** Whether whoever looks wants things to stand still. */
export const calm = () => query.matches;
