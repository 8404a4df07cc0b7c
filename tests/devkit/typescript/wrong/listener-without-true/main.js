morvik.button.addListener(function (press) { // red
  log(press);
});

morvik.rfid.addListener(function (tag) { // red
  if (tag.direction === 'IN') {
    return true;
  }
});

morvik.button.addListener(function () {
  return true;
});
