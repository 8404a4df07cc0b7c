// photo-upload: sends a picture to a server, as the form of a web page does.

// The third word of the launch line is where the form goes to.
var address = instanceName || 'http://127.0.0.1:8080/upload';

// Stands for a file. The script never reads it: what takes a file gets it handed on. The `data` that a
// photo of morvik.webcam ends with is the same kind of object, and goes up in the same way.
var picture = file.read('picture.svg');

// With `true` in the end the parameters go out as the parts of a form: texts, and the file under its
// own name. Without it, they would go out as one line of text, which has no room for a file.
function upload() {
  return http.post2(address, {
    title: 'From ' + appName,
    taken: timestamp(),
    photo: picture
  }, { 'User-Agent': appName }, true);
}

// A server that wants to be asked first answers "100 Continue", with header lines of its own: the
// last status counts.
function statusOf(answer) {
  return answer.header.match(/^HTTP\S+ .*$/gm).pop();
}

var answer = upload();
if (answer.content === 'curl error') { // also when the file is not there
  log('the picture did not get through to ' + address);
} else {
  log('the server says: ' + statusOf(answer).trim());
  log('and: ' + answer.content);
}

setTimeout(0, exit);
