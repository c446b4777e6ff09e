// The log, filtered; and the page as a whole.

const logRow = (line, index) => html`<div class="row ${line.priority}" id="line-${index}"
    title="${line.pid ? `process ${line.pid}, thread ${line.tid}` : ''}">
    <span class="time">${stamp(line.timeUs)}</span><span class="from ${line.from}">${line.from}</span>
    <span class="priority">${line.priority}</span><span class="tag-name">${line.tag}</span>
    <span class="message">${line.message}</span></div>`;

function logPart({log}) {
    const choice = (name, label, choices) => html`<label>${label} <select name="${name}">${
        choices.map(([value, text]) => html`<option value="${value}">${text}</option>`)}</select></label>`;
    const priorities = [['', 'all'], ['D', 'debug'], ['I', 'info'], ['W', 'warnings'], ['E', 'errors']];
    const writers = [['', 'tool and services'], ['tool', 'tool'], ['services', 'services']];
    return html`<section id="log"><div class="section-head"><h2>Log</h2>
        <span class="muted" id="shown"></span><span class="spring"></span>
        ${choice('priority', 'at least', priorities)} ${choice('from', 'from', writers)}
        <input type="search" name="text" placeholder="text in tag or message"
            aria-label="text in tag or message"></div>
        <div class="muted note">times in milliseconds since the run’s start</div>
        <div class="rows" tabindex="0" role="log" aria-live="off">${log.map(logRow)}</div></section>`;
}

function startLog({log, omittedLogLines}) {
    const part = document.getElementById('log');
    const filters = [...part.querySelectorAll('[name]')];
    const rows = [...part.querySelectorAll('.row')];
    // Lines that no log call wrote have no priority; they count as info.
    const level = (letter) => 'VDIWEF'.indexOf(letter);
    const filter = () => {
        const [priority, from, text] = filters.map(({value}) => value);
        const passes = (line) => level(line.priority || 'I') >= level(priority || 'V') &&
                (!from || line.from === from) &&
                `${line.tag}: ${line.message}`.toLowerCase().includes(text.toLowerCase());
        let shown = 0;
        log.forEach((line, index) => {
            rows[index].hidden = !passes(line);
            if (!rows[index].hidden) shown += 1;
        });
        part.querySelector('#shown').textContent = `${plural(shown, 'line')} of ${count(log.length)}` +
                (omittedLogLines ? `, ${count(omittedLogLines)} more in the files only` : '');
    };
    for (const one of filters) one.addEventListener('input', filter);
    // A link to a line that is filtered out.
    addEventListener('hashchange', () => {
        const row = document.querySelector(':target');
        if (!row || !row.hidden) return;
        for (const one of filters) one.value = '';
        filter();
        row.scrollIntoView({block: 'center'});
    });
    filter();
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
    document.getElementById('page').innerHTML = markup([
        parts.map((part) => part(report)),
        html`<footer>Facts of this page for programs: report.json, beside it.</footer>`,
    ]);
    startTimeline(report);
    startLog(report);
    addEventListener('beforeprint', () => {
        for (const details of document.querySelectorAll('details')) details.open = true;
    });
}

drawPage();
