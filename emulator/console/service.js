// SPDX-License-Identifier: MIT
// The developer's calls, and the emulator's clock.

import { say, text } from './console.js';

// No answer at all: the emulator has ended, or is not there yet.
export class Unreachable extends Error {}

// One call: its result, or an Error whose message is a sentence.
export async function call(method, path, body) {
  const options = { method };
  if (body !== undefined) {
    options.headers = { 'Content-Type': 'application/json' };
    options.body = JSON.stringify(body);
  }
  let response;
  let answer;
  try {
    response = await fetch(`/_dev/${path}`, options);
    answer = await response.json();
  } catch (error) {
    throw new Unreachable(text('offline'));
  }
  if (answer.status !== 'ok') throw new Error(answer.result);
  return answer.result;
}

export const serviceAddress = `${window.location.origin}/v1`;

let turn = () => {};

// The function that reads the emulator's state; see refreshed().
export function onRefresh(function_) {
  turn = function_;
}

export const refreshed = () => turn();

// Does something by a click, says what went wrong, and shows the state after it.
export async function act(action, done = '') {
  try {
    await action();
    if (done) say(done);
  } catch (error) {
    say(error.message);
  }
  await turn();
}

let skew = 0;

export function setClock({ now }) {
  skew = Date.parse(now) - Date.now();
}

// Seconds between a time of the emulator's and now, by its clock.
export const secondsSince = (iso) => Math.round((Date.now() + skew - Date.parse(iso)) / 1000);
