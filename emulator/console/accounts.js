// SPDX-License-Identifier: MIT
// Who exists, and who is signed in.

import { accountForm } from './account-form.js';
import { button, cell, confirmed, copyable, formatAge, formatDate, make } from './console.js';
import { setText, Table, text } from './console.js';
import { act, call, secondsSince, serviceAddress } from './service.js';

const phoneOf = ({ phone, phone_area: area }) => (phone ? `+${area} ${phone}` : '');
const ago = (iso) => (iso ? formatAge(secondsSince(iso)) : '');

async function edit(account) {
  const changes = await accountForm(account);
  if (changes) await act(() => {}, text('saved'));
}

async function remove(account) {
  const question = text('account.delete.question', account.username);
  if (await confirmed(question, text('delete')))
    await act(() => call('DELETE', `accounts/${account.user_id}`), text('deleted'));
}

const isLocked = (account) => account.locked || Boolean(account.lockedOutUntil);

function lockOrUnlock(account) {
  const locked = !isLocked(account);
  return act(() => call('PATCH', `accounts/${account.user_id}`, { locked }),
    text(locked ? 'account.locked.said' : 'account.unlocked.said', account.username));
}

function fieldsOf(account) {
  const list = make('dl');
  for (const [name, value] of Object.entries(account)) {
    const shown = typeof value === 'object' ? JSON.stringify(value) : String(value);
    if (name === 'password' || shown === '' || shown === 'null') continue;
    list.append(make('div', {}, make('dt', {}, name), make('dd', {}, shown)));
  }
  return list;
}

function badges(account) {
  const found = [];
  const add = (kind, label) => found.push(make('span', { class: `chip ${kind}` }, label));
  if (account.locked) add('bad', text('account.locked'));
  if (account.lockedOutUntil)
    add('bad', text('account.locked-out', formatAge(secondsSince(account.lockedOutUntil))));
  return found;
}

function makeAccountRow() {
  let account = null;
  let fields = null;
  const name = make('span', { class: 'name' });
  const marks = make('span', { class: 'chips' });
  const note = make('span', { class: 'under' });
  const password = cell();
  const [phone, sessions, last] = [cell(), cell(), cell()];
  const lock = button('', () => lockOrUnlock(account), { class: 'small quiet' });
  const opener = button('', null, { class: 'opener' });
  opener.append(name);
  const update = (next) => {
    const same = account && JSON.stringify(account) === JSON.stringify(next);
    setText(last, ago(next.lastLogin));
    if (same && !next.lockedOutUntil) return;
    account = next;
    setText(name, next.username);
    const about = [next.nick_name, next.companyName, next.note];
    setText(note, about.filter(Boolean).join(' · '));
    marks.replaceChildren(...badges(next));
    password.replaceChildren(next.password
      ? copyable(next.password, text('account.password.of', next.username))
      : make('span', { class: 'faint' }, text('account.password.kept')));
    setText(phone, phoneOf(next));
    setText(sessions, String(next.sessions));
    setText(lock, text(isLocked(next) ? 'unlock' : 'lock'));
    if (fields) fields.replaceChildren(...fieldsOf(next).children);
  };
  const named = (key) => ({ class: 'small quiet', 'data-action': key });
  const actions = make('div', { class: 'actions' },
    button(text('edit'), () => edit(account), named('edit')), lock,
    button(text('delete'), () => remove(account), named('delete')));
  return {
    cells: [cell(opener, marks, note), password, phone, sessions, last, cell(actions)],
    opener,
    update,
    details: () => (fields = fieldsOf(account)),
    opened: (open) => (fields = open ? fields : null),
  };
}

function makeSessionRow(session) {
  const [started, expires] = [cell(), cell()];
  started.title = formatDate(session.at);
  const end = () => act(() => call('DELETE', `sessions/${session.id}`), text('session.ended'));
  return {
    cells: [cell(session.username), started, cell(session.ip), expires,
      cell(make('div', { class: 'actions' },
        button(text('end'), end, { class: 'small quiet' })))],
    update: () => {
      setText(started, ago(session.at));
      setText(expires, session.expires ? ago(session.expires) : text('never'));
    },
  };
}

async function endAll() {
  if (await confirmed(text('sessions.end-all.question'), text('sessions.end-all')))
    await act(() => call('DELETE', 'sessions'), text('sessions.ended'));
}

const list = new Table(text('accounts'), [
  [text('account.name'), 'grow'], [text('account.password'), 'password'], [text('account.phone'), 'phone wide'],
  [text('account.sessions'), 'number wide'],
  [text('account.last'), 'wide'], [text('actions'), 'end unseen-head'],
], (account) => account.user_id, makeAccountRow);

const sessionList = new Table(text('sessions'), [
  [text('account.name'), 'grow'], [text('session.started')], [text('session.ip'), 'wide'],
  [text('session.expires')], [text('actions'), 'end unseen-head'],
], (session) => session.id, makeSessionRow);

const noAccounts = make('p', { class: 'empty', hidden: true }, text('accounts.empty'));
const noSessions = make('div', { class: 'empty', hidden: true },
  make('p', {}, text('sessions.empty')),
  copyable(`passportctl --cloud ${serviceAddress} sign-in ada@example.com`, text('command')));
const endAllButton = button(text('sessions.end-all'), endAll, { class: 'small' });

export const accounts = {
  build(section) {
    const add = button(text('account.add'), () => edit(null), { id: 'add-account', class: 'small' });
    section.append(
      make('div', { class: 'heading' }, make('h2', {}, text('accounts')), add),
      list.table, noAccounts,
      make('div', { class: 'heading' }, make('h2', {}, text('sessions')), endAllButton),
      make('p', { class: 'lead' }, text('sessions.lead')), sessionList.table, noSessions);
  },

  async refresh() {
    const [found, signedIn] =
      await Promise.all([call('GET', 'accounts'), call('GET', 'sessions')]);
    list.show(found);
    noAccounts.hidden = found.length > 0;
    sessionList.show(signedIn.slice(0, 200));
    noSessions.hidden = signedIn.length > 0;
    endAllButton.hidden = signedIn.length === 0;
  },
};
