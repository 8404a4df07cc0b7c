// Messages in a few words.

const kEnvelope = new Set(['id', 'correlationId', 'interactiveId', 'recipient', 'callback']);
const kLongest = 240;
const kBad = new Set(['ERROR', 'TIMEOUT', 'CANCELLED', 'BUSY', 'BAD_INTERACTIVEID', 'NOT_CONNECTED']);

const quoted = (text) => (text ? ` "${text}"` : '');

function light({ pulse, fade, light: steady }) {
  if (pulse) return `pulse ${pulse.color} ${pulse.period} ms × ${pulse.pulse}`;
  if (fade) return `fade ${fade.color} ${fade.period} ms`;
  return `light ${steady?.color ?? ''}`;
}

function move({ left = '·', right = '·', relative, reset }) {
  if (reset) return 'reset';
  return `${relative ? 'by' : 'to'} ${left}, ${right}`;
}

const kWords = {
  led: light,
  ears: move,
  response: ({ code = '', description }) => code + quoted(description),
  event: ({ code = '', description }) => code + quoted(description),
  interactiveMode: ({ action = '', interactiveId = '' }) => `${action} ${interactiveId}`,
  tts: ({ action, text, lang }) => `${action === 'START' ? '' : action}${quoted(text)} ${lang ?? ''}`,
  asr: ({ dictionary = [], lang }) => `${dictionary.join(' ')} ${lang ?? ''}`,
  buttonCallback: ({ type }) => type,
  earsCallback: ({ type, step, length }) =>
    [type, step, length].filter((part) => part !== undefined).join(' '),
  rfidCallback: ({ direction = '', id, type = '', color = '' }) => `${direction} ${id} ${type} ${color}`,
  multimediaCallback: ({ action }) => action,
  m2mCallback: ({ type, correspondant }) => `${type} ${correspondant}`,
  serialCallback: ({ readline }) => `${readline?.port ?? ''} ${readline?.data ?? ''}`,
  webcam: ({ photo }) => `photo ${photo}`,
  dock: ({ led, move: way, status, change }) =>
    led ? light(led) : way ? `move ${way.cmd} ${way.time ?? ''}` : `status ${status ?? ''} ${change ?? ''}`,
};

// Braces and quotes say little in one line.
function bare(value) {
  if (Array.isArray(value)) return value.map(bare).join(', ');
  if (typeof value !== 'object' || value === null) return String(value);
  return Object.entries(value)
    .map(([key, part]) => `${key} ${bare(part)}`)
    .join(' ');
}

const cut = (text) => (text.length > kLongest ? `${text.slice(0, kLongest)} …` : text);

const payloads = (message) => Object.keys(message).filter((key) => !kEnvelope.has(key));

function payloadInWords(key, value) {
  try {
    return `${key} ${(kWords[key] ?? bare)(value)}`.trim();
  } catch {
    return `${key} ${bare(value)}`;
  }
}

/** One line for a message. */
export function inFewWords(message) {
  const parts = payloads(message).map((key) => payloadInWords(key, message[key]));
  return cut(parts.join(', ').replace(/\s+/g, ' ').trim() || 'a message that asks for nothing');
}

/** Whether a message tells that something went wrong. */
export const isBad = (message) => kBad.has(message.response?.code ?? message.event?.code);
