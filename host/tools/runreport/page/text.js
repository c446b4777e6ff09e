'use strict';
// Markup, and values in words.

class Markup {
    constructor(text) {
        this.text = text;
    }
}

const escaped = (text) => String(text).replace(/[&<>"']/g, (c) => `&#${c.charCodeAt(0)};`);

function markup(part) {
    if (Array.isArray(part)) return part.map(markup).join('');
    return part instanceof Markup ? part.text : escaped(part);
}

// html`<p>${text}</p>`: text goes in as text, never as markup; what html`` gave and lists of it as
// they are.
const html = (texts, ...parts) => new Markup(String.raw({raw: texts}, ...parts.map(markup)));

// A list of terms; entries without a value are left out.
const facts = (entries) => html`<dl class="facts">${
        entries.filter(([, value]) => value !== '')
                .map(([term, value]) => html`<div><dt>${term}</dt><dd>${value}</dd></div>`)}</dl>`;

// A column is [title, value of a row, whether that is a number].
function table(columns, rows, failed) {
    const look = (number) => number ? 'number' : '';
    return html`<div class="scroll" tabindex="0"><table>
        <thead><tr>${columns.map(([title, , number]) => html`<th class="${look(number)}">${title}</th>`)}</tr></thead>
        <tbody>${rows.map((row) => html`<tr class="${failed(row) ? 'failed' : ''}">${
            columns.map(([, value, number]) => html`<td class="${look(number)}">${value(row)}</td>`)}</tr>`)}</tbody>
        </table></div>`;
}

// Text between backticks becomes code.
const withCode = (text) => text.split('`').map((part, i) => i % 2 ? html`<code>${part}</code>` : part);

const count = (number) => Number(number).toLocaleString('en');
const plural = (number, word) => `${count(number)} ${word}${number === 1 ? '' : 's'}`;
const fileName = (path) => path.slice(path.lastIndexOf('/') + 1);

// Three digits at most: "48 µs", "1.25 ms", "312 ms", "5.01 s".
function duration(micros) {
    if (micros < 1000) return `${Math.round(micros)} µs`;
    const [value, unit] = micros < 999500 ? [micros / 1000, 'ms'] : [micros / 1e6, 's'];
    return `${Number(value.toFixed(value < 9.995 ? 2 : value < 99.95 ? 1 : 0))} ${unit}`;
}

// A time as in the log, to the microsecond.
const stamp = (micros) => (micros / 1000).toLocaleString('en', {minimumFractionDigits: 3});

// A command word as a shell would need it.
const shellWord = (word) =>
        /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word.replaceAll('\'', '\'\\\'\'')}'`;
