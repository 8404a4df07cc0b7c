// The device's view, in the form that the drawing uses: what goes on stands with its begin and length.

import { nameOf } from './names.js';

const kRest = { active: false, begin: 0, length: 0, app: null };

function worksOf(view) {
  const works = new Map();
  for (const work of view.work ?? []) {
    works.set(work.work, {
      active: true,
      begin: work.begun ?? 0,
      length: work.length ?? 0,
      app: work.application,
    });
  }
  return (name) => works.get(name) ?? kRest;
}

function led(light, work) {
  const { color = '', effect = 'light', from = '', period = 0, count = 1 } = light ?? {};
  return { color, effect: work.active ? effect : 'light', asked: effect, from, period, count, ...work };
}

function ears(view, work) {
  const { left = 0, right = 0, towards = {}, step = 100 } = view.ears ?? {};
  const ear = (from, to) => ({
    from,
    to: work.active ? (to ?? from) : from,
    begin: work.begin,
    stepTime: step || 1,
  });
  return { left: ear(left, towards.left), right: ear(right, towards.right) };
}

function calls(view) {
  return (view.applications ?? [])
    .filter((app) => app.call?.state)
    .map((app) => ({
      app: app.number,
      name: nameOf(app.number),
      state: app.call.state,
      who: app.call.with ?? '',
      peer: app.call.peer,
    }));
}

/** What the drawing needs to know. */
export function deviceOf(view) {
  const work = worksOf(view);
  return {
    led: led(view.led, work('led')),
    dockLed: led(view.dock?.led, work('dock-led')),
    ears: ears(view, work('ears')),
    dock: { moving: view.dock?.moving ?? 'STOP', ...work('dock-move') },
    speech: { text: view.speech?.text ?? '', lang: view.speech?.lang ?? '', ...work('tts') },
    listening: { grammar: view.listening?.grammar ?? '', lang: view.listening?.lang ?? '', ...work('asr') },
    player: { mode: view.player?.mode ?? 'stopped', url: view.player?.url ?? '', ...work('sound') },
    record: { what: view.recorder?.url ?? '', ...work('record') },
    photo: { name: view.photo?.name ?? '', ...work('photo') },
    ports: view.ports ?? [],
    unread: (view.messages ?? []).filter((message) => message.status === 'UNREAD').length,
    messages: (view.messages ?? []).length,
    calls: calls(view),
  };
}
