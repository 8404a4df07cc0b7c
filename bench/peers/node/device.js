// The device as an application on Node.js sees it: messages by protobufjs, each behind its length in
// four bytes, on one socket.
'use strict';
const {randomUUID} = require('crypto');
const net = require('net');
const {ZephMsg, InteractiveMode, VReturnCode, ButtonCallback, RfidCallback} =
    require('./zeph-message').net.quelta.zeph.message;
const {runTask} = require('./application');

const kHeaderSize = 4;

// What MorvikVM writes to its log (duties.js); a bare application writes nothing.
const noDuties = Object.fromEntries(
    ['starting', 'connecting', 'askingToStart', 'granted', 'sending', 'received', 'answered', 'hearing',
     'pinging', 'lighting', 'adding', 'calling', 'heardTag'].map((name) => [name, () => {}]));

// What an application gets of a tag: names in the place of numbers.
function objectOf({id, direction, type, color}) {
  return {
    id,
    direction: RfidCallback.Dir[direction],
    type: RfidCallback.Type[type],
    color: RfidCallback.Col[color],
  };
}

class Device {
  constructor(socket, duties) {
    this.socket = socket;
    this.duties = duties;
    this.awaited = new Map();
    this.listeners = [];
    this.unread = null;
    socket.on('data', (bytes) => this.read(bytes));
  }

  read(bytes) {
    const all = this.unread ? Buffer.concat([this.unread, bytes]) : bytes;
    let at = 0;
    while (at + kHeaderSize <= all.length) {
      const end = at + kHeaderSize + all.readUInt32BE(at);
      if (end > all.length) break;
      this.dispatch(ZephMsg.decode(all.subarray(at + kHeaderSize, end)));
      at = end;
    }
    this.unread = at < all.length ? all.subarray(at) : null;
  }

  dispatch(message) {
    this.duties.received(message);
    if (message.correlationId) this.answer(message);
    for (const listener of this.listeners) {
      this.duties.calling();
      listener(message);
    }
  }

  answer(message) {
    const callback = this.awaited.get(message.correlationId);
    if (!callback) return;
    this.awaited.delete(message.correlationId);
    this.duties.answered();
    callback(message);
  }

  send(payload, callback) {
    const message = {id: randomUUID(), ...payload};
    if (this.interactiveId) message.interactiveId = this.interactiveId;
    if (callback) this.awaited.set(message.id, callback);
    this.duties.sending(message);
    const body = ZephMsg.encode(message).finish();
    const frame = Buffer.allocUnsafe(kHeaderSize + body.length);
    frame.writeUInt32BE(body.length);
    frame.set(body, kHeaderSize);
    this.socket.write(frame);
  }

  // A function of the application hears the name of the code.
  request(label, payload, callback) {
    this.send(payload, callback && ((message) => {
      if (!message.response) return;
      this.duties.hearing(label);
      callback(VReturnCode[message.response.code]);
    }));
  }

  goInteractive(granted) {
    const id = randomUUID();
    this.duties.askingToStart(id);
    this.send({interactiveMode: {interactiveId: id, action: InteractiveMode.Action.START}}, () => {
      this.interactiveId = id;
      this.duties.granted();
      granted();
    });
  }

  ping(callback) {
    this.duties.pinging();
    this.request('PingFunction', {ping: {}}, callback);
  }
  light(color, callback) {
    this.duties.lighting(color);
    this.request('LED', {led: {light: {color}}}, callback);
  }
  onButton(callback) {
    this.listen(({buttonCallback: button}) => {
      if (button) callback(ButtonCallback.Type[button.type]);
    });
  }
  onTag(callback) {
    this.listen(({rfidCallback: tag}) => {
      if (!tag) return;
      this.duties.heardTag(tag.id);
      callback(objectOf(tag));
    });
  }
  listen(listener) {
    this.duties.adding();
    this.listeners.push(listener);
  }
  after(callback) { setTimeout(callback, 1000000000); }
}

function start([port, task, count, others], duties = noDuties) {
  duties.starting();
  duties.connecting(port);
  const socket = net.connect(Number(port), '127.0.0.1');
  socket.setNoDelay(true);
  socket.on('connect', () => {
    const device = new Device(socket, duties);
    device.goInteractive(() => {
      console.log('granted');
      runTask(device, task, Number(count), Number(others));
    });
  });
}

module.exports = {start};
