// The page: what comes from the server goes to the parts that show it.

import { startApplications, takeApplications } from './applications.js';
import { byId, setText } from './dom.js';
import { hearEvent } from './events.js';
import { addLines, clearLog, forgetLines, logTab, missLines } from './log.js';
import { clearMessages, forgetMessages, messagesTab, missMessages } from './messages.js';
import { forgetNames } from './names.js';
import { addNote, clearNotes, notesTab } from './notes.js';
import { startScene } from './scene.js';
import { startSocket } from './socket.js';
import { changed, state } from './store.js';
import { makeTabs } from './tabs.js';
import { startTheme } from './theme.js';
import { makeWorld } from './world.js';

let ears = null;
let happens = null;
let world = false;

function setConnection(name, text) {
  document.body.dataset.connection = name;
  setText(byId('connection-text'), text);
}

// A page that did not keep up is told so, and tells where the gap is.
function miss({ log = 0, events = 0, now }) {
  if (log > 0) missLines(log, now);
  if (events === 0) return;
  missMessages(events);
  addNote({ event: 'gap', time: now, text: `${events} messages and notes were left out here` });
}

// What was before the history begins.
function begin({ log = 0, events = 0 }) {
  forgetLines(log);
  forgetMessages(events);
}

function hello(frame) {
  setConnection('open', 'Connected');
  const title = frame.title || 'Virtual device';
  Object.assign(state, {
    mode: frame.mode ?? 'device',
    title,
    view: frame.view,
    stimuli: stimuliOf(frame),
    tags: frame.tags ?? [],
  });
  forgetNames();
  takeApplications(frame.applications, frame.now);
  setText(byId('title'), title);
  document.title = title;
  if (!world) makeWorld(ears);
  if (!world && state.mode === 'device') happens.suggest('messages'); // there is no log
  world = true;
  for (const clear of [clearLog, clearMessages, clearNotes]) clear();
  addLines(frame.log ?? []);
  for (const event of frame.messages ?? []) hearEvent(event, true);
  begin(frame.missed ?? {});
  if (frame.trouble) addNote({ event: 'trouble', time: frame.now, text: frame.trouble });
  for (const part of ['view', 'applications', 'hello']) changed(part);
}

// The table comes with its version around it, or alone.
const stimuliOf = ({ stimuli }) => (Array.isArray(stimuli) ? stimuli : (stimuli?.stimuli ?? []));

const hearers = {
  hello,
  view: ({ view }) => {
    state.view = view;
    changed('view');
  },
  event: ({ event }) => hearEvent(event, false),
  applications: ({ applications, now }) => {
    takeApplications(applications, now);
    changed('applications');
  },
  log: ({ lines }) => addLines(lines ?? []),
  missed: miss,
  tags: ({ tags }) => {
    state.tags = tags ?? [];
    changed('tags');
  },
};

const kMany = 4; // attempts; then the tool has probably been started anew

function lost(reason, failures) {
  setConnection(
    'lost',
    reason ||
      (failures < kMany
        ? 'Connection lost, trying again'
        : 'Connection lost, trying again. If the tool was started anew, open the address that it printed'),
  );
}

startTheme();
ears = startScene();
startApplications();
happens = makeTabs('happens', [logTab(), messagesTab(), notesTab()]);
startSocket({ frame: (frame) => hearers[frame.type]?.(frame), lost });
