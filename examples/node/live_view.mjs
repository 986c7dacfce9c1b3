// A live stream in Node.js, through the C API:
//
//   LD_LIBRARY_PATH=FOLDERS node live_view.mjs rtsp://host:port/path [USER]      the password in TESSARO_PASSWORD
//
// Callbacks come on the library's threads and wait there until the JavaScript thread is free. So a call that waits for a
// running callback, such as the close of a stream, belongs on another thread: async, as below. On the JavaScript thread
// itself it gives up after 2 s with 219 (eResultStillRunning), and the callback is the last.
import koffi from "koffi";
import { promisify } from "node:util";

const [address, user = "", closeHere] = process.argv.slice(2);
const workMs = Number(process.env.WORK_MS ?? 0); // what a program does with a frame

koffi.struct("Login", {
  address: koffi.array("char", 256), port: "uint32", user: koffi.array("char", 32), password: koffi.array("char", 32),
  rtsp: koffi.array("uint32", 133), // how to build addresses; zero: the address above is whole
});
koffi.struct("Stream", { channel: "uint32", reserved: "uint32", kind: "uint32", para: koffi.array("uint32", 7) });
koffi.struct("Frame", {
  type: "uint32", codec: "uint32", name: koffi.array("char", 16), flags: "uint32", sequence: "uint32", lost: "uint32",
  length: "uint32", timeUs: "int64", wallClockUs: "int64", width: "uint32", height: "uint32", sampleRate: "uint32",
  channels: "uint32", data: "void *", config: "void *", configLength: "uint32",
});
koffi.proto("int OnFrame(void *stream, Frame *frame, ulong user)");
koffi.proto("int OnEvent(void *login, ulong event, ulong detail, ulong pause, ulong reconnects, ulong user)");

const library = koffi.load("libclientadapter.so");
const declare = (name, parameters) => library.func(`int ClientAdapter_${name}(${parameters})`);
const start = declare("Start", "uint channels");
const stop = declare("Stop", "");
const logIn = declare("UserLogin", "_Inout_ int *login, int protocol, Login *para");
const logOut = declare("UserLogout", "int login");
const open = declare("RealStreamConnect", "_Inout_ int *media, int login, Stream *para");
const close = declare("RealStreamDisconnect", "int media");
const subscribe = declare("SubscribeEvent", "int login, ulong zero, OnEvent *callback, ulong user");
const receive = declare("StreamMediaCB", "int media, OnFrame *callback, ulong user");

function workFor(milliseconds) {
  for (const until = performance.now() + milliseconds; performance.now() < until;);
}

let [frames, end] = [0];
const ended = new Promise((resolve) => { end = (how) => { resolve(how); return 0; }; });
const patience = setTimeout(end, 30000, "nothing came"); // callbacks alone don't keep Node.js running
const onFrame = koffi.register((stream, pointer) => {
  const frame = koffi.decode(pointer, "Frame");
  const data = koffi.decode(frame.data, "uint8", frame.length); // a copy: the frame itself ends with the callback
  console.log(`frame ${frame.sequence}: ${frame.name} ${frame.width}x${frame.height}, ${data.length} bytes`);
  workFor(workMs);
  return ++frames < 50 ? 0 : end("50 frames came");
}, "OnFrame *");
const onEvent = koffi.register((login, event, detail) => {
  return event === 4 || event === 5 ? end(`refused or lost: ${detail}`) : 0;
}, "OnEvent *");

const [login, media] = [[-1], [-1]];
start(1);
logIn(login, 2, { address, user, password: process.env.TESSARO_PASSWORD ?? "", rtsp: new Uint32Array(133) });
const result = open(media, login[0], { channel: 0, reserved: 0, kind: 1, para: new Uint32Array(7) });
subscribe(login[0], 0, onEvent, 0);
receive(media[0], onFrame, 0);
console.log(`opened with result ${result}`, await ended);
clearTimeout(patience);

if (closeHere) {
  workFor(100); // until a callback waits for this thread
  console.log(`closed here with result ${close(media[0])}`);
} else {
  console.log(`closed with result ${await promisify(close.async)(media[0])}`);
}
logOut(login[0]);
console.log(`stopped with result ${await promisify(stop.async)()}`);
