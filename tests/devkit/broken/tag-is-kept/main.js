var address = (instanceName || '127.0.0.1:7410').split(':');

var tags = {};

morvik.connect(address[0], Number(address[1]));

morvik.rfid.addListener(function (tag) {
  tags[tag.id] = tag;
  return true;
});

morvik.start(function () {
  log(Object.keys(tags).length);
});
