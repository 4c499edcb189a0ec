// What the pages share: failures in words, the account API, the web tool around a page, the form.

export const element = (id) => document.getElementById(id);

const requestSeconds = 30;
const reportSeconds = 10;

// Ends a submission. The word is one of the service or an error in texts.tsv;
// the detail stands in for %1 of its sentence, the field in for the one named there.
export class Failure extends Error {
  constructor(word, { detail = '', field = null } = {}) {
    super(word);
    const known = [...element('sentences').content.children];
    const entry = known.find((item) => item.dataset.word === word);
    const shown = entry || known.find((item) => item.dataset.word === 'page.refused');
    this.word = word;
    this.sentence = shown.textContent.replace('%1', () => (entry ? detail : word));
    this.field = field || (shown.dataset.field && element(shown.dataset.field));
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

// What the tool hands to the page, or null in an ordinary browser.
export const tool = ask('arguments').then((text) => {
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

export function clearMessage() {
  unmark();
  unmark = () => {};
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
  message.textContent = failure.sentence;
}

let busy = false;

function setBusy(on) {
  busy = on;
  element('form').setAttribute('aria-busy', String(on));
  const buttons = element('form').querySelectorAll('button:not(#cancel)');
  for (const button of buttons) button.disabled = on;
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

export function serveForm(submit) {
  const form = element('form');
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    whileBusy(submit);
  });
  for (const id of ['cancel', 'close']) {
    element(id).addEventListener('click', () => report('close'));
    tool.then((found) => (element(id).hidden = !found));
  }
  form.querySelector('input:not([type=radio])').focus();
}

// Reports the result to the tool and shows the end of the page. Whether the tool took it.
export async function finish(what, values) {
  const inTool = (await tool) !== null;
  const told = inTool && (await report(what, values)) !== null;
  element('form').hidden = true;
  element('untold').hidden = told || !inTool;
  element('no-application').hidden = inTool;
  element('done').hidden = false;
  (inTool ? element('close') : element('done')).focus();
  return told;
}

export function filled(id) {
  const field = element(id);
  if (field.value.trim()) return field.value;
  const label = document.querySelector(`label[for=${id}]`).textContent;
  throw new Failure('page.empty', { detail: label, field });
}

// The name of an account, whichever the user goes by.
export function knownName() {
  const phoneArea = element('phone-area').value.trim().replace(/^\+/, '');
  return { username: filled('username').trim(), phoneArea };
}

// A name that a code can be sent to.
export function contact() {
  const name = knownName();
  const isPhone = /^[0-9]+$/.test(name.username);
  if (!isPhone && !name.username.includes('@')) throw new Failure('page.contact');
  if (isPhone && !/^[0-9]+$/.test(name.phoneArea)) throw new Failure('page.area');
  if (!isPhone) name.phoneArea = '';
  return name;
}

// A password that has been typed twice.
export function newPassword() {
  const password = filled('password');
  if (filled('password-again') !== password) throw new Failure('page.differ');
  return password;
}
