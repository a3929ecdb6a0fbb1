// The other side of our Web Push, by packages that are not ours: npm's web-push seals, http_ece opens, jws
// verifies. scripts/web-push-peer installs them and runs this.
//
//   node peer.mjs seal                           prints messages that the peer sealed, one JSON object a line
//   node peer.mjs receive SUBSCRIPTION QX PUSH   lets `qx send` post the push, opens it, checks who sent it
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { createECDH, createPublicKey, randomBytes } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { createRequire } from 'node:module';
import { promisify } from 'node:util';

const load = createRequire(`${process.env.PEER_PACKAGES}/`);
const webPush = load('web-push');
const ece = load('http_ece');
const jws = load('jws');

const text = (bytes) => Buffer.from(bytes).toString('base64url');

function makeReceiver() {
  const pair = createECDH('prime256v1');
  pair.generateKeys();
  return { pair, p256dh: text(pair.getPublicKey()), auth: text(randomBytes(16)) };
}

// --- seal

async function sealedBy(receiver, message) {
  const subscription = { endpoint: 'https://push.example.net/1', keys: receiver };
  return webPush.generateRequestDetails(subscription, message, { contentEncoding: 'aes128gcm' }).body;
}

// What web-push itself never sends: other sizes of record, padding.
function encrypted(receiver, message, options) {
  const pair = createECDH('prime256v1');
  pair.generateKeys();
  return ece.encrypt(message, {
    version: 'aes128gcm', dh: receiver.p256dh, authSecret: receiver.auth, privateKey: pair, ...options,
  });
}

async function seal() {
  const push = '{"aps":{"alert":{"title":"Grüße ☕"},"mutable-content":1},"_sid":"VTQX"}';
  const made = [
    ['a push', push, sealedBy],
    ['one byte', '!', sealedBy],
    ['as much as fits', 'x'.repeat(3993), sealedBy],
    ['bytes that are no text', Buffer.from([0xff, 0, 2, 0, 0]), sealedBy],
    ['padding', push, (receiver, message) => encrypted(receiver, message, { pad: 500 })],
    ['two records', push, (receiver, message) => encrypted(receiver, message, { rs: 64 }), 'refused'],
  ];
  for (const [name, message, by, refused] of made) {
    const receiver = makeReceiver();
    const body = await by(receiver, Buffer.from(message));
    console.log(JSON.stringify({
      name,
      privateKey: text(receiver.pair.getPrivateKey()), publicKey: receiver.p256dh, auth: receiver.auth,
      body: text(body), ...(refused ? {} : { message: text(Buffer.from(message)) }),
    }));
  }
}

// --- receive

// The one request that comes while `act` runs.
async function requestDuring(act) {
  let seen;
  const server = createServer((request, response) => {
    const chunks = [];
    request.on('data', (chunk) => chunks.push(chunk));
    request.on('end', () => {
      seen = { headers: request.headers, body: Buffer.concat(chunks) };
      response.writeHead(201).end();
    });
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  const origin = `http://127.0.0.1:${server.address().port}`;
  await act(origin).finally(() => server.close());
  return { ...seen, origin };
}

function verifyVAPID(authorization, origin) {
  const [, token, key] = authorization.match(/^vapid t=([^,]+), k=(.+)$/);
  const point = Buffer.from(key, 'base64url');
  assert.equal(point.length, 65);
  const jwk = { kty: 'EC', crv: 'P-256', x: text(point.subarray(1, 33)), y: text(point.subarray(33)) };
  const pem = createPublicKey({ key: jwk, format: 'jwk' }).export({ type: 'spki', format: 'pem' });
  assert.ok(jws.verify(token, 'ES256', pem), 'the signature does not fit the key');
  const claims = jws.decode(token).payload;
  const validity = claims.exp - Date.now() / 1000;
  assert.equal(claims.aud, origin);
  assert.ok(validity > 0 && validity <= 24 * 3600, `good for ${validity} s`);
  assert.match(claims.sub, /^(mailto:|https:)/);
}

async function receive(folder, qx, push) {
  const receiver = makeReceiver();
  const file = `${folder}/subscription.json`;
  const { headers, body, origin } = await requestDuring((at) => {
    const keys = { p256dh: receiver.p256dh, auth: receiver.auth };
    writeFileSync(file, JSON.stringify({ endpoint: `${at}/push/1`, keys }));
    return promisify(execFile)(qx, ['send', '--subscription', file, '--vapid', `${folder}/vapid.json`, push]);
  });
  assert.equal(headers['content-encoding'], 'aes128gcm');
  assert.match(headers.ttl, /^\d+$/);
  verifyVAPID(headers.authorization, origin);
  const opened = ece.decrypt(body, { version: 'aes128gcm', privateKey: receiver.pair, authSecret: receiver.auth });
  assert.deepEqual(JSON.parse(opened), JSON.parse(readFileSync(push)));
  console.log(`the peer opened ${body.length} bytes and accepts their sender`);
}

const [command, ...rest] = process.argv.slice(2);
await { seal, receive }[command](...rest);
