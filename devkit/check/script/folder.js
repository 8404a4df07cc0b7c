// Names of files, against the files that are there.

// Where a device has its applications, and what of a path there is cut off.
const kAppsOnDevice = '/usr/morvik/apps/';
const kRoom = { include: 254, other: 511 };

class Folder {
  /** `names` are the files that are there, `app` the folder's own name. */
  constructor(names, app, report) {
    this.names = new Set(names);
    this.app = app;
    this.report = report;
    this.written = new Set(); // names that some script writes
    this.unread = []; // [node, name] that may be written before they are read
    this.read = new Set(); // names that some script reads as texts
    this.lacksScript = false; // a script that is included is missing
  }

  has(name) {
    return this.names.has(plainName(name));
  }

  checkName(node, name, path) {
    const reason = refusal(name);
    if (reason !== null) {
      this.report(node, 'path-refused', `${path} refuses ${JSON.stringify(name)}: ${reason}`,
        'Names are of the application\'s folder, and hold letters, digits, _, -, / and single dots.');
      return;
    }
    this.checkLength(node, name, path === 'include' ? kRoom.include : kRoom.other);
    if (path === 'file.write') this.written.add(plainName(name));
    if (path === 'include' && !this.has(name)) {
      this.lacksScript = true;
      this.tellMissing(node, name, 'which ends the application');
    }
    if (path === 'file.read' && this.has(name)) this.read.add(plainName(name));
    if (path === 'file.read' && !this.has(name)) this.unread.push([node, name]);
  }

  checkLength(node, name, room) {
    const path = `${kAppsOnDevice}${this.app}/${name}`;
    if (path.length <= room) return;
    this.report(node, 'path-too-long', `the path of this file has ${path.length} bytes on a device, and is cut to ${room}`, 'Give it a shorter name.');
  }

  checkSource(node, source) {
    if (source.startsWith('./') && !this.has(source)) this.tellMissing(node, source, 'and nothing is played');
    if (source !== '' && !source.startsWith('./') && this.has(source)) {
      this.report(node, 'file-missing', `the player is not told that ${JSON.stringify(source)} is a file of the application`, `Write './${plainName(source)}'.`);
    }
  }

  tellMissing(node, name, effect) {
    const other = nearest(plainName(name), [...this.names]);
    this.report(node, 'file-missing', `there is no file ${JSON.stringify(name)}, ${effect}`, other === null ? 'Add it to the folder.' : `Is ${other} meant?`);
  }

  /** Files that are read and that nobody writes. */
  finish() {
    for (const [node, name] of this.unread) {
      if (!this.written.has(plainName(name))) this.tellMissing(node, name, 'and its text cannot be read');
    }
  }
}
