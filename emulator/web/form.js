// SPDX-License-Identifier: MIT
// The form of a page: its fields, its submission and its end.

import { offerAreas } from './areas.js';
import { element, Failure, report, tool, whileBusy } from './page.js';
import './policy.js';

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
  offerAreas();
  const reveal = element('show-password');
  if (reveal) reveal.addEventListener('click', () => showPasswords(reveal));
  const fields = [...form.querySelectorAll('input:not([type=radio])')];
  const visible = fields.find((field) => field.offsetParent);
  if (visible) visible.focus();
}

function showPasswords(button) {
  const on = button.getAttribute('aria-pressed') !== 'true';
  button.setAttribute('aria-pressed', String(on));
  for (const id of ['password', 'password-again'])
    if (element(id)) element(id).type = on ? 'text' : 'password';
}

// What the application waits for is told by the page that it opened, from which links may have led
// to this one.
const page = document.querySelector('main').dataset.page;
const opened = new URLSearchParams(location.search).get('from') || page;
export const awaited = opened === 'sign-in' ? 'signed-in' : 'account';

// Reports the result to the tool and shows the end of the page. Whether the tool took it.
export async function finish(what, values) {
  const inTool = (await tool) !== null;
  const signInNext = what === 'account' && (!inTool || awaited === 'signed-in');
  const isAwaited = what === awaited || what === 'supplied';
  const told = inTool && isAwaited && (await report(what, values)) !== null;
  element('form').hidden = true;
  element('untold').hidden = told || !inTool || signInNext;
  element('no-application').hidden = inTool || signInNext;
  element('go-on').hidden = !signInNext;
  element('done').hidden = false;
  const next = signInNext ? 'go-on' : 'close';
  element(inTool || signInNext ? next : 'done').focus();
  return told;
}

export function filled(id) {
  const field = element(id);
  if (field.value.trim()) return field.value;
  const label = document.querySelector(`label[for=${id}]`);
  throw new Failure('page.empty', { detail: label, field });
}

// The name of an account, whichever the user goes by. Phone numbers alone have an area.
export function knownName() {
  const username = filled('username').trim();
  const area = element('phone-area').value.trim().replace(/^\+/, '');
  return { username, phoneArea: /^[0-9]+$/.test(username) ? area : '' };
}

// A name that a code can be sent to.
export function contact() {
  const name = knownName();
  const isPhone = /^[0-9]+$/.test(name.username);
  if (!isPhone && !name.username.includes('@')) throw new Failure('page.contact');
  if (isPhone && !/^[0-9]+$/.test(name.phoneArea)) throw new Failure('page.area');
  return name;
}

// A password that has been typed twice.
export function newPassword() {
  const password = filled('password');
  if (filled('password-again') !== password) throw new Failure('page.differ');
  return password;
}
