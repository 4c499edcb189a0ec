// SPDX-License-Identifier: MIT
// The verification codes that have been sent, and the captchas with their answers.

import { cell, copyable, formatAge, formatDate, formatTime, hasText, make } from './console.js';
import { setText, Table, text } from './console.js';
import { call, secondsSince } from './service.js';

const shownAtMost = 200;

const purposeText = (purpose) =>
  hasText(`purpose.${purpose}`) ? text(`purpose.${purpose}`) : purpose;

// The cells that change with time: how old it is, and what it is good for still.
function changingCells() {
  const age = cell();
  const chip = make('span', { class: 'chip' });
  const update = ({ time, state, expires }) => {
    setText(age, formatAge(secondsSince(time)));
    age.title = formatDate(time);
    setText(chip, text(`state.${state}`));
    chip.className = state === 'valid' ? 'chip good' : 'chip';
    chip.title = expires ? text('inbox.expires', formatTime(expires)) : '';
  };
  return { cells: [age, cell(chip)], update };
}

function makeCodeRow(message) {
  const { username, phoneArea, purpose, code } = message;
  const changing = changingCells();
  const to = phoneArea && /^[0-9]+$/.test(username) ? `+${phoneArea} ${username}` : username;
  return {
    cells: [cell(copyable(code, text('inbox.code.of', username))), cell(to),
      cell(purposeText(purpose)), ...changing.cells],
    update: changing.update,
  };
}

function makeCaptchaRow(captcha) {
  const changing = changingCells();
  const picture = make('img', { alt: text('captcha.alt', captcha.answer) });
  let shown = '';
  return {
    cells: [cell(picture), cell(copyable(captcha.answer, text('captcha.answer'))),
      cell(purposeText(captcha.purpose)), ...changing.cells],
    update: (next) => {
      if (next.picture !== shown) picture.src = `data:image/png;base64,${next.picture}`;
      shown = next.picture;
      changing.update(next);
    },
  };
}

const codes = new Table(text('codes'), [
  [text('inbox.code'), 'code'], [text('inbox.to'), 'grow'], [text('inbox.purpose'), 'wide'],
  [text('inbox.age')], [text('inbox.state')],
], (message) => message.id, makeCodeRow);

const captchas = new Table(text('captchas'), [
  [text('captcha.picture')], [text('captcha.answer'), 'code grow'],
  [text('inbox.purpose'), 'wide'], [text('inbox.age')], [text('inbox.state')],
], (captcha) => `${captcha.id} ${captcha.time}`, makeCaptchaRow);

const noCodes = make('p', { class: 'empty', hidden: true }, text('codes.empty'), ' ',
  make('a', { href: '/web/sign-in' }, text('pages.sign-in')));
const noCaptchas = make('p', { class: 'empty', hidden: true }, text('captchas.empty'));

export const inbox = {
  build(section) {
    section.append(
      make('div', { class: 'heading' }, make('h2', {}, text('codes'))), codes.table, noCodes,
      make('div', { class: 'heading' }, make('h2', {}, text('captchas'))),
      captchas.table, noCaptchas);
  },

  async refresh() {
    const [messages, pictures] =
      await Promise.all([call('GET', 'inbox'), call('GET', 'captchas')]);
    codes.show(messages.reverse().slice(0, shownAtMost));
    noCodes.hidden = messages.length > 0;
    captchas.show(pictures);
    noCaptchas.hidden = pictures.length > 0;
  },
};
