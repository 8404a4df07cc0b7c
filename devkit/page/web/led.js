// Both LEDs: light, fade and pulse, drawn from when they began.

import { between, brightness, colorOf, inWords } from './color.js';
import { calm } from './frame.js';
import { byId, setFlag } from './dom.js';

const kDark = [0, 0, 0];

// The part of the way from dark to lit and back within a pulse.
const swell = (part) => Math.sin(Math.PI * (part % 1)) ** 2;

/**
 * What an LED shows at a time: `led` has color, effect and, while it changes, from, begin, length,
 * period. Gives {rgb, moves}.
 */
function ledAt(led, now) {
  const to = colorOf(led.color) ?? kDark;
  const part = led.length > 0 ? (now - led.begin) / led.length : 1;
  if (part >= 1 || led.effect === 'light') return { rgb: to, moves: false };
  if (calm()) return { rgb: to, moves: true };
  if (led.effect === 'pulse') {
    return {
      rgb: between(kDark, to, swell(Math.max(0, now - led.begin) / Math.max(1, led.period))),
      moves: true,
    };
  }
  return { rgb: between(colorOf(led.from) ?? kDark, to, Math.max(0, part)), moves: true };
}

// A dim colour shows as a bright one that glows less.
function glowing(rgb) {
  const light = brightness(rgb);
  return light > 0 ? { rgb: rgb.map((value) => value / light), light } : { rgb, light };
}

function show(led, now, { element, fill, variable, glows }) {
  const { rgb, moves } = ledAt(led, now);
  const { rgb: full, light } = glowing(rgb);
  const drawing = byId('device');
  drawing.style.setProperty(variable, inWords(full));
  setFlag(element, 'data-lit', light > 0.004);
  fill.style.opacity = light > 0.004 ? String(0.25 + 0.75 * light) : '1';
  for (const [glow, strength] of glows) glow.style.opacity = String(strength * light);
  return moves;
}

export function makeLeds() {
  const belly = {
    element: byId('led'),
    fill: byId('led-disc'),
    variable: '--led',
    glows: [
      [byId('halo'), 0.9],
      [byId('ambient'), 0.42],
    ],
  };
  const dock = {
    element: byId('dock-led'),
    fill: byId('dock-led'),
    variable: '--dock-led',
    glows: [[byId('dock-glow'), 0.95]],
  };
  return (device, now) => {
    const bellyMoves = show(device.led, now, belly);
    return show(device.dockLed, now, dock) || bellyMoves;
  };
}
