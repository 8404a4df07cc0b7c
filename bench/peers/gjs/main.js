// The application on gjs: gjs main.js PORT TASK COUNT OTHERS.
'use strict';
print('started');
const folder = imports.gi.GLib.path_get_dirname(imports.system.programPath);
imports.searchPath.unshift(folder, folder + '/..');
const {Gio, GLib} = imports.gi;
const codec = imports.codec;
const {runTask} = imports.application;

const kHeaderSize = 4;
const kReadSize = 65536;

class Device {
  constructor(connection) {
    this.input = connection.get_input_stream();
    this.output = connection.get_output_stream();
    this.awaited = new Map();
    this.listeners = [];
    this.unread = null;
    this.readNext();
  }

  readNext() {
    this.input.read_bytes_async(kReadSize, GLib.PRIORITY_DEFAULT, null, (stream, result) => {
      const bytes = stream.read_bytes_finish(result).toArray();
      if (bytes.length === 0) return;
      this.read(bytes);
      this.readNext();
    });
  }

  read(bytes) {
    const all = this.unread ? this.joined(this.unread, bytes) : bytes;
    const view = new DataView(all.buffer, all.byteOffset, all.byteLength);
    let at = 0;
    while (at + kHeaderSize <= all.length) {
      const end = at + kHeaderSize + view.getUint32(at);
      if (end > all.length) break;
      this.dispatch(codec.decodeMessage(all.subarray(at + kHeaderSize, end)));
      at = end;
    }
    this.unread = at < all.length ? all.slice(at) : null;
  }

  joined(first, second) {
    const all = new Uint8Array(first.length + second.length);
    all.set(first);
    all.set(second, first.length);
    return all;
  }

  dispatch(message) {
    if (message.correlationId) this.answer(message);
    for (const listener of this.listeners) listener(message);
  }

  answer(message) {
    const callback = this.awaited.get(message.correlationId);
    if (!callback) return;
    this.awaited.delete(message.correlationId);
    callback(message);
  }

  send(payload, body, callback) {
    const id = GLib.uuid_string_random();
    if (callback) this.awaited.set(id, callback);
    this.output.write_all(codec.frameOf(id, this.interactiveId, payload, body), null);
  }

  // A function of the application hears the name of the code.
  request(payload, body, callback) {
    this.send(payload, body, callback && ((message) => message.response && callback(message.response.code)));
  }

  goInteractive(granted) {
    const id = GLib.uuid_string_random();
    this.send(codec.kMode, codec.modeBody(id), () => {
      this.interactiveId = id;
      granted();
    });
  }

  ping(callback) { this.request(codec.kPing, [], callback); }
  light(color, callback) { this.request(codec.kLed, codec.lightBody(color), callback); }
  onButton(callback) {
    this.listeners.push(({buttonCallback}) => buttonCallback && callback(buttonCallback.type));
  }
  onTag(callback) { this.listeners.push(({rfidCallback}) => rfidCallback && callback(rfidCallback)); }
  after(callback) { GLib.timeout_add(GLib.PRIORITY_DEFAULT, 1000000000, callback); }
}

const [port, task, count, others] = ARGV;
const connection = new Gio.SocketClient().connect_to_host('127.0.0.1', Number(port), null);
connection.get_socket().set_option(6, 1, 1);  // TCP_NODELAY
const device = new Device(connection);
device.goInteractive(() => {
  print('granted');
  runTask(device, task, Number(count), Number(others));
});
new GLib.MainLoop(null, false).run();
