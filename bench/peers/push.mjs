// What `qx push` does with packed pushes, as a script would: reads one push a line, inflates and parses its rich
// features, merges them into its userInfo and prints what would be shown, in the order of the input.
//
//   node push.mjs JOBS FILE > results.ndjson
//
// One job is the main thread itself; of several each is a worker thread, which takes its turn at runs of lines.

import { randomUUID } from 'node:crypto';
import { createReadStream } from 'node:fs';
import { isMainThread, parentPort, Worker } from 'node:worker_threads';
import { fileURLToPath } from 'node:url';
import { inflateRawSync } from 'node:zlib';

function shown(line) {
  const push = JSON.parse(line);
  const richFeatures = JSON.parse(inflateRawSync(Buffer.from(push.$_rf, 'base64')).toString());
  const { title, subtitle, body } = push.aps.alert;
  return JSON.stringify({
    identifier: randomUUID(),
    outcome: 'delivered',
    elapsedMs: 0,
    content: { title, subtitle, body, userInfo: { ...push, $_rf: '', _rf: richFeatures }, attachments: [] },
  });
}

const answer = (lines) => lines.split('\n').map((line) => `${shown(line)}\n`).join('');

// Runs of whole lines.
async function* runsOf(file) {
  let rest = '';
  for await (const piece of createReadStream(file, { encoding: 'utf8', highWaterMark: 1 << 18 })) {
    const end = piece.lastIndexOf('\n');
    if (end >= 0) yield rest + piece.slice(0, end);
    rest = end >= 0 ? piece.slice(end + 1) : rest + piece;
  }
  if (rest) yield rest;
}

const write = (text) => new Promise((done) => process.stdout.write(text, done));

// A worker thread; asked again only when it has answered.
class Job {
  #worker = new Worker(fileURLToPath(import.meta.url));
  #done = () => {};
  constructor() {
    this.#worker.on('message', (text) => this.#done(text));
  }
  answer(lines) {
    return new Promise((done) => {
      this.#done = done;
      this.#worker.postMessage(lines);
    });
  }
  end() {
    return this.#worker.terminate();
  }
}

async function answerByWorkers(file, count) {
  const jobs = Array.from({ length: count }, () => new Job());
  const answers = jobs.map(() => '');  // each job's last
  let turn = 0;
  for await (const lines of runsOf(file)) {
    await write(await answers[turn]);
    answers[turn] = jobs[turn].answer(lines);
    turn = (turn + 1) % count;
  }
  for (let left = count; left > 0; --left, turn = (turn + 1) % count) await write(await answers[turn]);
  await Promise.all(jobs.map((job) => job.end()));
}

if (!isMainThread) {
  parentPort.on('message', (lines) => parentPort.postMessage(answer(lines)));
} else {
  const [jobs, file] = process.argv.slice(2);
  if (Number(jobs) > 1) await answerByWorkers(file, Number(jobs));
  else for await (const lines of runsOf(file)) await write(answer(lines));
}
