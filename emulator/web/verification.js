// The captcha and the verification code of a form.

import { call, element, Failure, filled, showFailure, whileBusy } from './page.js';

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
    element('new-captcha').addEventListener('click', () =>
      whileBusy(async () => {
        await this.newPicture();
        element('captcha').focus();
      }));
    element('send-code').addEventListener('click', () => whileBusy(() => this.send()));
    element('captcha').addEventListener('keydown', (event) => {
      if (event.key !== 'Enter' || event.target.readOnly) return;
      event.preventDefault();
      whileBusy(() => this.send());
    });
    for (const id of ['username', 'phone-area'])
      element(id).addEventListener('change', () => this.offerAnotherCode());
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

  // A code that has been sent is of no use to another user.
  offerAnotherCode() {
    if (element('captcha').readOnly) this.start();
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
    const notice = element('code-sent');
    notice.textContent = notice.dataset.text.replace('%1', () => name.username);
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
    element('code-sent').textContent = '';
    await this.newPicture().catch(() => {});
  }
}
