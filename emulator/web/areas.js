// SPDX-License-Identifier: MIT
// The calling codes to choose from, by country. Where the service gives no list, a field to type.

import { call, element } from './page.js';

let countries = [];

// The browser's name of a country, in the page's language.
function nameOf({ code, name }) {
  try {
    return new Intl.DisplayNames([document.documentElement.lang], { type: 'region' }).of(code);
  } catch (error) {
    return name;
  }
}

function showCountries(chosen) {
  const select = element('phone-area');
  const { lang } = document.documentElement;
  const named = countries.map((country) => ({ ...country, label: nameOf(country) }));
  named.sort((left, right) => left.label.localeCompare(right.label, lang));
  const options = named.map(({ id, phoneArea, label }) => {
    const option = new Option(`${label} (+${phoneArea})`, phoneArea);
    option.dataset.country = id;
    return option;
  });
  const none = select.options[0];
  select.replaceChildren(none, ...options);
  (options.find((option) => option.dataset.country === chosen) || none).selected = true;
}

const chosenCountry = () => element('phone-area').selectedOptions[0].dataset.country;

function offerField() {
  const field = document.createElement('input');
  const select = element('phone-area');
  for (const name of ['id', 'autocomplete', 'aria-describedby'])
    field.setAttribute(name, select.getAttribute(name));
  field.inputMode = 'tel';
  select.replaceWith(field);
}

export async function offerAreas() {
  const current = call('GET', '/ip-country').catch(() => '');
  try {
    countries = await call('GET', '/countries');
    showCountries(await current);
  } catch (error) {
    offerField();
    return;
  }
  document.addEventListener('languagechanged', () => showCountries(chosenCountry()));
}
