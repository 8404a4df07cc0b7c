morvik.rfid.addListener(function (tag) {
  log(tag.colour); // red
  return true;
});

morvik.button.addListener(function (press) {
  if (press === 'TWICE') { // red
    log('twice');
  }
  return true;
});
