// SPDX-License-Identifier: MIT
// How the service behaves, its clock, and its data as a whole.

import { button, choice, confirmed, field, formatDate, make } from './console.js';
import { say, setText, text } from './console.js';
import { act, call } from './service.js';

const groups = {
  codes: ['codeIntervalSeconds', 'codeLifetimeSeconds', 'fixedCode'],
  captchas: ['captchaLifetimeSeconds', 'fixedCaptcha'],
  sessions: ['sessionLifetimeSeconds', 'lockOutTries', 'lockOutSeconds'],
  caller: ['country'],
};
const texts = ['fixedCode', 'fixedCaptcha', 'country'];
const steps = { minute: 60, hour: 3600, day: 86400 };

const controls = {};
const problems = {};
let known = {};

// A value is set when its field is left, or by the Enter key; what is being typed stays.
async function change(name) {
  const { value } = controls[name];
  if (value === String(known[name])) return;
  problems[name].textContent = '';
  try {
    if (value === '' && !texts.includes(name)) throw new Error(text('settings.empty'));
    const next = texts.includes(name) ? value : Number(value);
    known = await call('POST', 'settings', { [name]: next });
    say(text('saved'));
  } catch (error) {
    problems[name].textContent = error.message;
  }
  controls[name].setAttribute('aria-invalid', String(problems[name].textContent !== ''));
}

function makeControl(name, countries) {
  if (name === 'country') return choice(countries);
  const isText = texts.includes(name);
  return make('input', isText ? { autocomplete: 'off', spellcheck: 'false' } : { type: 'number' });
}

function countryNames(countries) {
  const found = countries.map(({ code, name }) => [code, `${localName(code, name)} (${code})`]);
  return found.sort((left, right) => left[1].localeCompare(right[1]));
}

function localName(code, name) {
  try {
    return new Intl.DisplayNames([document.documentElement.lang], { type: 'region' }).of(code);
  } catch (error) {
    return name;
  }
}

function makeSetting(name, countries) {
  const control = makeControl(name, countries);
  controls[name] = control;
  control.dataset.setting = name;
  control.addEventListener('change', () => change(name));
  problems[name] = make('p', { class: 'wrong', role: 'alert' });
  const node = field(text(`setting.${name}`), control, text(`setting.${name}.hint`));
  node.append(problems[name]);
  return node;
}

function card(title, ...content) {
  return make('section', { class: 'card' }, make('h3', {}, title), ...content);
}

const now = make('p', { class: 'clock' });
const setBack = button(text('clock.back'), () =>
  act(() => call('DELETE', 'clock'), text('clock.back.said')), { class: 'small quiet' });

function clockCard() {
  const forward = Object.entries(steps).map(([unit, seconds]) =>
    button(text(`clock.${unit}`), () =>
      act(() => call('POST', 'clock', { advanceSeconds: seconds })), { class: 'small' }));
  return card(text('clock'), now, make('p', { class: 'hint' }, text('clock.hint')),
    make('div', { class: 'actions' }, ...forward, setBack));
}

async function exportSeed() {
  const seed = JSON.stringify(await call('GET', 'export'), null, 4);
  const address = URL.createObjectURL(new Blob([seed], { type: 'application/json' }));
  const link = make('a', { href: address, download: 'seed.json' });
  link.click();
  URL.revokeObjectURL(address);
}

async function importSeed(file) {
  let seed;
  try {
    seed = JSON.parse(await file.text());
  } catch (error) {
    say(text('data.import.no-json', file.name));
    return;
  }
  if (await confirmed(text('data.import.question', file.name), text('data.import')))
    await act(() => call('POST', 'import', seed), text('data.imported'));
}

async function reset() {
  if (await confirmed(text('data.reset.question'), text('data.reset')))
    await act(() => call('POST', 'reset', {}), text('data.reset.said'));
}

function dataCard() {
  const chooser = make('input', { type: 'file', accept: '.json,application/json', hidden: true });
  chooser.addEventListener('change', async () => {
    if (chooser.files[0]) await importSeed(chooser.files[0]);
    chooser.value = '';
  });
  return card(text('data'), make('p', { class: 'hint' }, text('data.hint')), chooser,
    make('div', { class: 'actions' },
      button(text('data.export'), () => act(exportSeed), { class: 'small' }),
      button(text('data.import'), () => chooser.click(), { class: 'small' }),
      button(text('data.reset'), reset, { class: 'small danger' })));
}

export const settings = {
  build(section, catalogue) {
    const countries = countryNames(catalogue.countries);
    const cards = Object.entries(groups).map(([group, names]) =>
      card(text(`settings.${group}`), ...names.map((name) => makeSetting(name, countries))));
    section.append(make('div', { class: 'heading' }, make('h2', {}, text('settings'))),
      make('p', { class: 'lead' }, text('settings.lead')),
      make('div', { class: 'cards' }, ...cards, clockCard(), dataCard()));
  },

  async refresh() {
    const [found, clock] = await Promise.all([call('GET', 'settings'), call('GET', 'clock')]);
    for (const [name, control] of Object.entries(controls)) {
      const isTouched = control === document.activeElement || problems[name].textContent !== '';
      const wasTyped = control.value !== String(known[name]) && known[name] !== undefined;
      if (!isTouched && !wasTyped && control.value !== String(found[name]))
        control.value = found[name];
    }
    known = found;
    setText(now, formatDate(clock.now));
    setBack.hidden = clock.aheadSeconds === 0;
  },
};
