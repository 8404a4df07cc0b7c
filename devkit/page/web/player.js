// What plays, and what is recorded.

import { byId, setFlag, setText } from './dom.js';
import { showMeter } from './bubbles.js';

const kSigns = { playing: '▶', paused: '❚❚', stopped: '■', recording: '●' };
const kWords = { playing: 'Plays', paused: 'Paused:', stopped: 'Played last:', recording: 'Records' };

const seconds = (time) => Math.round(time / 1000);

function shownWork(device) {
  return device.record.active ? device.record : device.player;
}

export function showPlayer(device) {
  const mode = device.record.active ? 'recording' : device.player.mode;
  setFlag(byId('player'), 'data-mode', mode);
  setText(byId('player-sign'), kSigns[mode] ?? kSigns.stopped);
  const what = mode === 'recording' ? device.record.what : device.player.url;
  const text = what ? `${kWords[mode]} ${what}` : mode === 'recording' ? 'Records' : 'Nothing plays';
  setText(byId('player-text'), text);
  byId('player-text').title = text;
}

export function runPlayer(device, now) {
  const work = shownWork(device);
  showMeter('player-meter', work, now);
  const passed = Math.min(work.length, Math.max(0, now - work.begin));
  setText(byId('player-time'), work.length > 0 ? `${seconds(passed)} of ${seconds(work.length)} s` : '');
  return work.active;
}
