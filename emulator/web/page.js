// SPDX-License-Identifier: MIT
// What the pages share: failures in words, the account API, the web tool around a page.

import './language.js'; // first: it reads the page as it came

export const element = (id) => document.getElementById(id);

const requestSeconds = 30;
const reportSeconds = 10;

// Ends a submission. The word is one of the service or an error in texts.tsv;
// the detail, a text or an element with one, stands in for %1 of its sentence, the field in for the
// one named there.
export class Failure extends Error {
  constructor(word, { detail = '', field = null } = {}) {
    super(word);
    const known = [...element('sentences').content.children];
    const entryFor = (name) => known.find((item) => item.dataset.word === name);
    this.word = word;
    this.entry = entryFor(word) || entryFor('page.refused');
    this.detail = detail;
    this.field = field || (this.entry.dataset.field && element(this.entry.dataset.field));
  }

  get sentence() {
    const { detail } = this;
    return this.entry.textContent.replace('%1', detail.textContent || detail);
  }
}

// One request of the account API: its result, or a Failure.
export async function call(method, path, body, token) {
  const headers = { 'Content-Type': 'application/json' };
  if (token) headers['X-Auth-Token'] = token;
  const abort = new AbortController();
  const timer = setTimeout(() => abort.abort(), requestSeconds * 1000);
  let status;
  let text;
  try {
    const options = { method, headers, body: JSON.stringify(body), signal: abort.signal };
    const response = await fetch(`/v1${path}`, options);
    status = response.status;
    text = await response.text();
  } catch (error) {
    throw new Failure('page.network');
  } finally {
    clearTimeout(timer);
  }
  if (status !== 200) throw new Failure('page.http', { detail: status });
  return resultIn(text);
}

function resultIn(text) {
  let answer = null;
  try {
    answer = JSON.parse(text);
  } catch (error) {
    throw new Failure('page.answer');
  }
  if (answer && answer.status === 'ok') return answer.result;
  if (answer && answer.status === 'fail') throw new Failure(String(answer.result));
  throw new Failure('page.answer');
}

// One request to the web tool around the page: its answer, or null if it refuses or there is no
// tool. The tool's scheme is open to XMLHttpRequest alone.
function ask(address) {
  return new Promise((resolve) => {
    const request = new XMLHttpRequest();
    request.onload = () => resolve(request.responseText);
    request.onerror = () => resolve(null);
    request.ontimeout = () => resolve(null);
    try {
      request.open('GET', `openweburl:${address}`);
      request.timeout = reportSeconds * 1000;
      request.send();
    } catch (error) {
      resolve(null);
    }
  });
}

// An ordinary browser would note the question as an error: a web tool names its engine or itself.
const mayBeTool = /QtWebEngine|openweburl/i.test(navigator.userAgent);

// What the tool hands to the page, or null in an ordinary browser.
export const tool = (mayBeTool ? ask('arguments') : Promise.resolve(null)).then((text) => {
  if (text === null) return null;
  try {
    return JSON.parse(text) || {};
  } catch (error) {
    return {};
  }
});

// Tells the tool something, with the key that shows who tells it; null as above.
export async function report(what, values = {}) {
  const found = await tool;
  if (!found) return null;
  const pairs = Object.entries({ ...values, key: found.key || '' });
  const query = pairs.map(([name, value]) => `${name}=${encodeURIComponent(value)}`).join('&');
  return ask(`${what}?${query}`);
}

let unmark = () => {};
let shown = null;

export function clearMessage() {
  unmark();
  unmark = () => {};
  shown = null;
  element('message').textContent = '';
}

// Shows the sentence below the field at fault, or above the buttons, and leads there.
export function showFailure(failure) {
  clearMessage();
  const message = element('message');
  const field = failure.field && failure.field.offsetParent ? failure.field : null;
  if (field) {
    field.closest('.field').after(message);
    const described = field.getAttribute('aria-describedby');
    field.setAttribute('aria-invalid', 'true');
    field.setAttribute('aria-describedby', described ? `message ${described}` : 'message');
    unmark = () => {
      field.removeAttribute('aria-invalid');
      if (described) field.setAttribute('aria-describedby', described);
      else field.removeAttribute('aria-describedby');
    };
    field.focus();
  } else {
    element('form').querySelector('.buttons').before(message);
  }
  shown = failure;
  message.textContent = failure.sentence;
}

document.addEventListener('languagechanged', () => {
  if (shown) element('message').textContent = shown.sentence;
});

let busy = false;

function setBusy(on) {
  busy = on;
  element('form').setAttribute('aria-busy', String(on));
  const buttons = element('form').querySelectorAll('button:not(#cancel)');
  for (const button of buttons) button.disabled = on || 'waits' in button.dataset;
}

// Runs one action at a time and shows how it failed. A button that was pressed for it keeps the
// focus unless the action or the failure moves it.
export async function whileBusy(action) {
  if (busy) return;
  const pressed = document.activeElement;
  let failure = null;
  clearMessage();
  setBusy(true);
  try {
    await action();
  } catch (error) {
    failure = error instanceof Failure ? error : new Failure('page.answer');
    if (failure !== error) console.error(error);
  } finally {
    setBusy(false);
  }
  if (document.activeElement === document.body && pressed.offsetParent) pressed.focus();
  if (failure) showFailure(failure);
}
