var address = (instanceName || '127.0.0.1:7410').split(':');

var answer = http.post('http://' + address[0] + '/upload', {
  picture: file.read('picture.png')
}, {}, true);
log(answer);
setTimeout(0, exit);
