// The log, filtered; and the page as a whole. The filter is in the address:
// #priority=W&from=tool&text=words

const rowsAtOnce = 1000;

class LogView {
    constructor(report, part) {
        this.lines = report.log;
        this.omitted = report.omittedLogLines;
        this.rows = part.querySelector('.rows');
        this.note = part.querySelector('#shown');
        this.filters = [...part.querySelectorAll('[name]')];
        for (const filter of this.filters) {
            filter.addEventListener('input', () => {
                clearTimeout(this.pause);
                this.pause = setTimeout(() => this.changed(), 120);  // a word, not each letter
            });
        }
        part.addEventListener('click', ({target}) => {
            if (target.dataset.first) this.draw(Number(target.dataset.first));
        });
        addEventListener('hashchange', () => this.readAddress());
        this.readAddress();
    }

    changed() {
        const set = this.filters.filter(({value}) => value).map(({name, value}) => [name, value]);
        history.replaceState(null, '', `#${new URLSearchParams(set)}`);
        this.draw(0);
    }

    readAddress() {
        const state = new URLSearchParams(location.hash.slice(1));
        for (const filter of this.filters) {
            filter.value = state.get(filter.name) || '';
            if (filter.selectedIndex === -1) filter.value = '';  // no such choice
        }
        this.draw(0);
    }

    // Lines that no log call wrote have no priority; they count as info.
    passing() {
        const [priority, from, text] = this.filters.map(({value}) => value);
        const level = (letter) => 'VDIWEF'.indexOf(letter);
        return this.lines.filter(
                (line) => level(line.priority || 'I') >= level(priority || 'V') &&
                        (!from || line.from === from) &&
                        `${line.tag}: ${line.message}`.toLowerCase().includes(text.toLowerCase()));
    }

    draw(first, marked) {
        const lines = this.passing();
        if (marked) first = Math.max(0, lines.indexOf(marked) - 20);
        const end = Math.min(first + rowsAtOnce, lines.length);
        const more = (text, at) =>
                html`<div class="more"><button data-first="${at}">${text}</button></div>`;
        const none = this.lines.length ? 'No line passes the filter.' : 'There is no log.';
        this.note.textContent = `${plural(lines.length, 'line')} of ${count(this.lines.length)}` +
                (this.omitted ? `, ${count(this.omitted)} more in the files only` : '');
        this.rows.innerHTML = markup([
            first > 0 ? more('earlier lines', Math.max(0, first - rowsAtOnce)) : '',
            lines.slice(first, end).map((line) => logRow(line, line === marked)),
            end < lines.length ? more(`later lines (${count(lines.length - end)})`, end) : '',
            lines.length ? '' : html`<div class="empty">${none}</div>`,
        ]);
        this.rows.scrollTop = 0;
    }

    // Shows the first line with this message among its neighbours.
    showMessage(message) {
        for (const filter of this.filters) filter.value = '';
        this.changed();
        this.draw(0, this.lines.find((line) => line.message === message));
        const row = this.rows.querySelector('.found');
        if (row) row.scrollIntoView({block: 'center'});
    }
}

const logRow = (line, found) => html`<div class="row ${line.priority} ${found ? 'found' : ''}"
    title="${line.pid ? `process ${line.pid}, thread ${line.tid}` : ''}">
    <span class="time">${stamp(line.timeUs)}</span><span class="from ${line.from}">${line.from}</span>
    <span class="priority">${line.priority}</span><span class="tag-name">${line.tag}</span>
    <span class="message">${line.message}</span></div>`;

function logPart() {
    const choice = (name, label, choices) => html`<select name="${name}" aria-label="${label}">${
        choices.map(([value, text]) => html`<option value="${value}">${text}</option>`)}</select>`;
    const priorities = [['', 'all'], ['D', 'debug'], ['I', 'info'], ['W', 'warnings'], ['E', 'errors']];
    const writers = [['', 'tool and services'], ['tool', 'tool'], ['services', 'services']];
    return html`<section id="log"><div class="section-head"><h2>Log</h2>
        <span class="muted" id="shown"></span><span class="spring"></span>
        <label>at least ${choice('priority', 'least priority', priorities)}</label>
        <label>from ${choice('from', 'from', writers)}</label>
        <input type="search" name="text" placeholder="text in tag or message"
            aria-label="text in tag or message"></div>
        <div class="muted note">times in milliseconds since the run’s start</div>
        <div class="rows" tabindex="0" role="log" aria-live="off"></div></section>`;
}

function missingPart({missing}) {
    if (!missing.length) return '';
    return html`<section id="missing">
        <div class="section-head"><h2>Missing in this report</h2></div>
        <ul>${missing.map((reason) => html`<li class="mono">${reason}</li>`)}</ul></section>`;
}

function drawPage() {
    const report = JSON.parse(document.getElementById('report').textContent);
    const parts = [headerPart, problemsPart, framesPart, timelinePart, logPart, missingPart];
    const page = document.getElementById('page');
    page.innerHTML = markup([
        parts.map((part) => part(report)),
        html`<footer>Facts of this page for programs: report.json, beside it.</footer>`,
    ]);
    startTimeline(report);
    const log = new LogView(report, document.getElementById('log'));
    page.addEventListener('click', ({target}) => {
        if (target.dataset.message) log.showMessage(target.dataset.message);
    });
}

drawPage();
