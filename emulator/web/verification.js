// SPDX-License-Identifier: MIT
// The captcha and the verification code of a form.

import { filled } from './form.js';
import { call, element, Failure, showFailure, whileBusy } from './page.js';

function randomId() {
  const bytes = crypto.getRandomValues(new Uint8Array(16));
  bytes[6] = (bytes[6] & 0x0f) | 0x40;
  bytes[8] = (bytes[8] & 0x3f) | 0x80;
  const digits = [...bytes].map((byte) => byte.toString(16).padStart(2, '0')).join('');
  return digits.replace(/^(.{8})(.{4})(.{4})(.{4})/, '$1-$2-$3-$4-');
}

export class Verification {
  // readName returns the user that the code goes to: {username, phoneArea}.
  constructor(purpose, readName) {
    this.purpose = purpose;
    this.readName = readName;
    this.id = '';
    // What the latest code was sent for: the service takes the code only together with it.
    this.sent = null;
    this.seconds = 0; // until another code may be sent
    this.timer = 0;
    this.sendLabel = element('send-code').firstChild;
    element('new-captcha').addEventListener('click', () =>
      whileBusy(async () => {
        await this.newPicture();
        element('captcha').focus();
      }));
    element('send-code').addEventListener('click', () => whileBusy(() => this.send()));
    element('captcha').addEventListener('keydown', (event) => {
      if (event.key !== 'Enter' || event.target.readOnly || this.seconds > 0) return;
      event.preventDefault();
      whileBusy(() => this.send());
    });
    element('form').addEventListener('change', ({ target }) => {
      if (['username', 'phone-area'].includes(target.id)) this.offerAnotherCode();
    });
    document.addEventListener('languagechanged', () => this.showState());
  }

  async newPicture() {
    const picture = element('captcha-picture');
    const field = element('captcha');
    const id = randomId();
    this.id = id;
    field.value = '';
    field.readOnly = false;
    picture.removeAttribute('src');
    delete picture.dataset.captchaId;
    const size = `w=${picture.width}&h=${picture.height}`;
    const image = await call('GET', `/captcha/${id}?${size}&l=4&p=${this.purpose}`);
    if (this.id !== id) return;
    picture.src = `data:image/png;base64,${image}`;
    picture.dataset.captchaId = id;
  }

  // A first picture, not waited for.
  start() {
    this.newPicture().catch(showFailure);
  }

  // A code that has been sent is of no use to another user, who has not to wait for one either.
  offerAnotherCode() {
    this.wait(0);
    if (element('captcha').readOnly) this.start();
  }

  wait(seconds) {
    clearInterval(this.timer);
    const end = Date.now() + seconds * 1000;
    const tick = () => {
      this.seconds = Math.max(0, Math.ceil((end - Date.now()) / 1000));
      if (this.seconds === 0) clearInterval(this.timer);
      this.showState();
    };
    tick();
    if (this.seconds > 0) this.timer = setInterval(tick, 250);
  }

  // How long to wait, in place of the button's text, and where the latest code went.
  showState() {
    const button = element('send-code');
    const busy = element('form').getAttribute('aria-busy') === 'true';
    const waiting = document.createTextNode(button.dataset.text.replace('%1', this.seconds));
    button.replaceChildren(this.seconds > 0 ? waiting : this.sendLabel);
    if (this.seconds > 0) button.dataset.waits = '';
    else delete button.dataset.waits;
    button.disabled = busy || this.seconds > 0;
    const notice = element('code-sent');
    const name = this.sent && this.sent.username;
    notice.textContent = name ? notice.dataset.text.replace('%1', () => name) : '';
  }

  async send() {
    const name = this.readName();
    if (element('captcha').readOnly) {
      await this.newPicture();
      throw new Failure('page.newCaptcha');
    }
    const captcha = filled('captcha').trim();
    const sent = { ...name, captcha, uuid: `${this.purpose}-${this.id}` };
    const lang = document.documentElement.lang.toLowerCase();
    try {
      await call('POST', '/user/code', { ...sent, lang, source: 'web' });
    } catch (failure) {
      await this.newPicture().catch(() => {}); // the service takes no captcha for two codes
      throw failure;
    }
    this.sent = sent;
    element('captcha').readOnly = true;
    element('code').value = '';
    this.wait(Number(element('send-code').dataset.interval));
    element('code').focus();
  }

  // Calls the API with what proves that the user has the code.
  async callWithCode(path, body, token) {
    const name = this.readName();
    const { sent } = this;
    if (!sent || sent.username !== name.username || sent.phoneArea !== name.phoneArea)
      throw new Failure('page.noCode');
    const validCode = filled('code').trim();
    try {
      return await call('POST', path, { ...body, ...sent, validCode }, token);
    } catch (failure) {
      if (['captchaErr', 'captchaExpired', 'codeExpired', 'tooManyTries'].includes(failure.word))
        await this.forget();
      throw failure;
    }
  }

  async forget() {
    this.sent = null;
    element('code').value = '';
    this.showState();
    await this.newPicture().catch(() => {});
  }
}
