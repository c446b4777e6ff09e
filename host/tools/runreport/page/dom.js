'use strict';
// Elements, and values in words. Text always goes in as text, never as markup.

// make("p", {class: "muted"}, "words", otherElement)
function make(name, attributes, ...content) {
    return fill(document.createElement(name), attributes, content);
}

function makeSvg(name, attributes, ...content) {
    return fill(document.createElementNS('http://www.w3.org/2000/svg', name), attributes, content);
}

function fill(element, attributes, content) {
    for (const [name, value] of Object.entries(attributes || {})) {
        if (name.startsWith('on'))
            element.addEventListener(name.slice(2), value);
        else if (value !== null && value !== false)
            element.setAttribute(name, value);
    }
    for (const part of content.flat(Infinity)) {
        if (part !== null && part !== undefined && part !== '') element.append(part);
    }
    return element;
}

// A list of terms; entries without a value are left out.
function facts(className, entries) {
    return make(
            'dl', {class: className},
            entries.filter(([, value]) => value !== '' && value !== null)
                    .map(([term, value]) =>
                                 make('div', {}, make('dt', {}, term), make('dd', {}, value))));
}

function table(columns, rows) {
    const cell = (kind, column, value) =>
            make(kind, {class: column.number ? 'number' : null}, value);
    return make(
            'div', {class: 'scroll', tabindex: 0},
            make('table', {},
                 make('thead', {},
                      make('tr', {}, columns.map((column) => cell('th', column, column.title)))),
                 make('tbody', {},
                      rows.map(
                              (row) =>
                                      make('tr', {class: row.failed ? 'failed' : null},
                                           columns.map(
                                                   (column) =>
                                                           cell('td', column,
                                                                String(column.value(row)))))))));
}

// What stands between backticks as code.
function withCode(text) {
    return text.split('`').map((part, index) => index % 2 ? make('code', {}, part) : part);
}

const count = (number) => Number(number).toLocaleString('en');
const plural = (number, word) => `${count(number)} ${word}${number === 1 ? '' : 's'}`;
const fileName = (path) => path.slice(path.lastIndexOf('/') + 1);

// Three digits at most: "48 µs", "1.25 ms", "312 ms", "5.01 s".
function duration(micros) {
    if (micros < 1000) return `${Math.round(micros)} µs`;
    const [value, unit] = micros < 999500 ? [micros / 1000, 'ms'] : [micros / 1e6, 's'];
    const digits = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return `${Number(value.toFixed(digits))} ${unit}`;
}

// A time as in the log, to the microsecond.
const stamp = (micros) => (micros / 1000).toLocaleString('en', {minimumFractionDigits: 3});

// A command word as a shell would need it.
function shellWord(word) {
    return /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word.replaceAll('\'', '\'\\\'\'')}'`;
}

const tip = document.getElementById('tip');

// Shows the text beside the pointer while it is over the element.
function withTip(element, text) {
    element.setAttribute('aria-label', text);
    element.addEventListener('pointermove', (event) => {
        tip.textContent = text;
        tip.hidden = false;
        const left = Math.min(event.clientX + 14, innerWidth - tip.offsetWidth - 8);
        const below = event.clientY + 18;
        const fits = below + tip.offsetHeight < innerHeight;
        tip.style.left = `${Math.max(8, left)}px`;
        tip.style.top = `${fits ? below : event.clientY - tip.offsetHeight - 10}px`;
    });
    element.addEventListener('pointerleave', () => {
        tip.hidden = true;
    });
    return element;
}
