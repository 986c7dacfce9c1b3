// A client that nobody here wrote, on a device: logs in, looks at it, moves it, hears of it.
//
//     client.js FOLDER HOST PORT USER PASSWORD      FOLDER/node_modules has the packages
//
// Prints a line for each thing that worked. Ends after the first motion event.
const Module = require('module');
const path = require('path');

const [folder, hostname, port, username, password] = process.argv.slice(2);
const { Cam, Discovery } = Module.createRequire(path.join(folder, 'node_modules', 'x.js'))('onvif');
const say = (...words) => console.log(words.join(' '));
const ask = (object, name, ...rest) => new Promise((resolve, reject) =>
  object[name](...rest, (error, answer) => (error ? reject(new Error(`${name}: ${error.message}`)) : resolve(answer))));

async function main() {
  const found = await new Promise((resolve) => Discovery.probe({ timeout: 3000, resolve: false }, (error, all) => resolve(all)));
  say('found', found.length);
  const cam = new Cam({ hostname, port: Number(port), username, password, timeout: 20000, autoconnect: false });
  cam.on('error', () => {});
  await ask(cam, 'connect');
  const information = await ask(cam, 'getDeviceInformation');
  say('model', information.model);
  const profiles = await ask(cam, 'getProfiles');
  say('profiles', profiles.length);
  const profileToken = profiles[0].$.token;
  say('stream', (await ask(cam, 'getStreamUri', { protocol: 'RTSP', profileToken })).uri);
  say('snapshot', (await ask(cam, 'getSnapshotUri', { profileToken })).uri);
  say('encoders', (await ask(cam, 'getVideoEncoderConfigurations')).length);
  const before = (await ask(cam, 'getStatus', { profileToken })).position;
  await ask(cam, 'continuousMove', { profileToken, x: 0.8, y: 0, zoom: 0, timeout: 10000 });
  let now = before;
  while (now.x === before.x) now = (await ask(cam, 'getStatus', { profileToken })).position;
  await ask(cam, 'stop', { profileToken, panTilt: true, zoom: true });
  say('moved', before.x, now.x);
  const presets = await ask(cam, 'setPreset', { profileToken, presetName: 'Door' }).then(() => ask(cam, 'getPresets', { profileToken }));
  say('presets', Object.keys(presets).join());
  cam.on('event', (message) => {
    const topic = message.topic._ || message.topic;
    say('event', topic, JSON.stringify(message.message.message.data));
    if (/[Mm]otion/.test(topic) && /true/.test(JSON.stringify(message.message.message.data))) process.exit(0);
  });
  say('listening');
}

main().catch((error) => {
  console.log('failed', error.message);
  process.exit(1);
});
setTimeout(() => {
  console.log('failed', 'nothing came');
  process.exit(1);
}, 120000).unref();
