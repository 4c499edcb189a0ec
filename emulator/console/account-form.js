// SPDX-License-Identifier: MIT
// The form that adds or changes an account.

import { button, field, make, showDialog, text } from './console.js';
import { call } from './service.js';

const texts = ['username', 'password', 'nick_name', 'email', 'phone_area', 'phone', 'country',
  'companyName', 'companyType', 'companyPurpose', 'factory_objs', 'note'];
const lists = ['oems', 'perms'];
const flags = ['locked', 'defaultDentalOrderReceive'];

const listText = (list) => (list || []).join(', ');
const listIn = (value) => value.split(',').map((item) => item.trim()).filter(Boolean);

function controls(account) {
  const found = {};
  for (const name of texts)
    found[name] = make('input', { name, value: (name !== 'password' && account[name]) || '' });
  for (const name of lists) found[name] = make('input', { name, value: listText(account[name]) });
  for (const name of flags)
    found[name] = make('input', { name, type: 'checkbox', checked: Boolean(account[name]) });
  for (const control of Object.values(found)) {
    control.autocomplete = 'off';
    control.spellcheck = false;
  }
  found.phone_area.inputMode = 'numeric';
  found.phone.inputMode = 'numeric';
  found.username.required = true;
  return found;
}

// What differs from the account as it was; of a new one, what is filled in.
function changesIn(found, account) {
  const changes = {};
  for (const name of texts)
    if (found[name].value !== ((name !== 'password' && account[name]) || ''))
      changes[name] = found[name].value;
  for (const name of lists)
    if (found[name].value !== listText(account[name])) changes[name] = listIn(found[name].value);
  for (const name of flags)
    if (found[name].checked !== Boolean(account[name])) changes[name] = found[name].checked;
  return changes;
}

function flagField(control, label) {
  return make('label', { class: 'flag' }, control, label);
}

function layout(found, isNew) {
  const labelled = (name, hint = '') => field(text(`account.${name}`), found[name], hint);
  const row = (...fields) => make('div', { class: 'columns' }, ...fields);
  const hint = isNew ? '' : text('account.password.hint');
  return [
    row(labelled('username'), labelled('password', hint)),
    row(labelled('nick_name'), labelled('email')),
    row(labelled('phone_area'), labelled('phone')),
    row(labelled('companyName'), labelled('companyType')),
    row(labelled('companyPurpose'), labelled('country')),
    row(labelled('perms', text('account.list.hint')), labelled('oems')),
    row(labelled('factory_objs', text('account.factory_objs.hint')), labelled('note')),
    flagField(found.locked, text('account.locked.flag')),
    flagField(found.defaultDentalOrderReceive, text('account.orders.flag')),
  ];
}

// Shows the form for an account, or for a new one. Whether something has been changed.
export function accountForm(existing) {
  const account = existing || {};
  const found = controls(account);
  const title = existing ? text('account.edit', account.username) : text('account.add');
  return showDialog(title, (close) => {
    const problem = make('p', { class: 'wrong', role: 'alert' });
    const form = make('form', { novalidate: true }, ...layout(found, !existing), problem,
      make('div', { class: 'buttons' },
        make('button', { type: 'submit' }, text(existing ? 'save' : 'add')),
        button(text('cancel'), () => close(false), { class: 'quiet' })));
    form.addEventListener('submit', async (event) => {
      event.preventDefault();
      const changes = changesIn(found, account);
      problem.textContent = '';
      try {
        if (!existing) await call('POST', 'accounts', changes);
        else await call('PATCH', `accounts/${account.user_id}`, changes);
        close(true);
      } catch (error) {
        problem.textContent = error.message;
      }
    });
    return form;
  });
}
