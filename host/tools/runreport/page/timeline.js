// The run over time: a row for each step, then calls and errors as marks; and all of it as tables.

const maxMarks = 2000;  // in a row or table; a browser is slow with more

// Steps of one name share a row; the rows are in the order of a run's first frame.
function phaseRows(phases) {
    const names = [...Object.keys(phaseLabels), ...phases.map((phase) => phase.name)];
    return [...new Set(names)]
            .map((name) => ({name, steps: phases.filter((phase) => phase.name === name)}))
            .filter((row) => row.steps.length);
}

// Steps that are none of the tool's work.
const isIdle = ({name}) => name === 'device' || name === 'exit';

// [label, look, marks]
function markRows({calls, log}) {
    const ofCall = (call) => ({
        startUs: call.startUs, endUs: call.startUs + call.durationUs, bad: isBad(call),
        text: `${call.method} ${call.incoming ? 'from' : 'to'} ${call.peer}\n${callEnd(call)}`,
    });
    const ofLine = (line) => ({startUs: line.timeUs, endUs: line.timeUs, text: line.message});
    return [
        ['Calls out', 'call', calls.filter((call) => !call.incoming).map(ofCall)],
        ['Calls in', 'call', calls.filter((call) => call.incoming).map(ofCall)],
        ['Errors', 'bad', log.filter(({priority}) => 'EF'.includes(priority || ' ')).map(ofLine)],
    ].filter(([, , marks]) => marks.length);
}

// About one label every 90 pixels, at 1, 2 or 5 times a power of ten.
function tickStep(range, width) {
    const rough = Math.max(range * 90 / Math.max(width, 90), 1);
    const power = 10 ** Math.floor(Math.log10(rough));
    return power * ([1, 2, 5].find((factor) => factor * power >= rough) || 10);
}

// With as many digits as tell one label from the next.
function tickText(micros, step) {
    const [size, unit] = micros < 1000 ? [1, 'µs'] : micros < 1e6 ? [1000, 'ms'] : [1e6, 's'];
    const digits = Math.max(0, Math.ceil(Math.log10(size / step)));
    return micros === 0 ? '0' : `${Number((micros / size).toFixed(digits))} ${unit}`;
}

// The rows between two times of the run, `width` pixels wide.
function lanes(report, from, to, width) {
    // Per cent of the width. What is far outside is just outside: browsers limit lengths.
    const at = (micros) => Math.min(Math.max((micros - from) / (to - from) * 100, -2), 102);
    const piece = (look, {startUs, endUs}, text) => html`<i class="${look}" title="${text}"
        style="left: ${at(startUs)}%; width: ${at(endUs) - at(startUs)}%"></i>`;
    const bar = (step) => {
        const look = step.waits ? 'waits' : isIdle(step) ? 'idle' : '';
        return piece(`bar ${look} ${step.end}`, step, stepText(step));
    };
    const phaseRow = ({name, steps}) => {
        const [first, last] = [steps[0].startUs, steps[steps.length - 1].endUs];
        const margin = Math.max((last - first) * 0.15, 5);
        const took = duration(steps.reduce((sum, step) => sum + step.endUs - step.startUs, 0));
        return html`<div class="lane"><button class="link" data-from="${first - margin}"
            data-to="${last + margin}">${phaseLabel(name)}</button><b class="number">${took}</b>
            <div class="plot">${steps.map(bar)}</div></div>`;
    };
    const markRow = ([label, look, marks]) => html`<div class="lane"><b>${label}</b><b></b>
        <div class="plot">${marks.slice(0, maxMarks).map((mark) =>
            piece(`${look} ${mark.bad ? 'bad' : ''}`, mark, mark.text))}</div></div>`;
    const step = tickStep(to - from, width - 230);
    const ticks = [];
    for (let time = Math.ceil(from / step) * step; time <= to; time += step) {
        const text = at(time) > 95 ? '' : tickText(time, step);
        ticks.push(html`<span style="left: ${at(time)}%">${text}</span>`);
    }
    const rows = [...phaseRows(report.phases).map(phaseRow), ...markRows(report).map(markRow)];
    return html`<div class="lane axis" style="--lanes: ${rows.length + 1}"><b></b><b></b>
        <div class="plot">${ticks}</div></div>${rows}`;
}

function stepText(step) {
    const end = {failed: ', failed', 'timed-out': ', timed out', 'cut-short': ', the run ended here'};
    return `${phaseLabel(step.name)}: ${duration(step.endUs - step.startUs)}${end[step.end] || ''}` +
            `${step.detail ? `\n${step.detail}` : ''}`;
}

const isBad = ({status, answer}) => status !== 'OK' || answer;
const callStatus = ({status, answer}) => answer || status || 'not answered';
const callEnd = (call) => `${duration(call.durationUs)}, ${callStatus(call)}`;

const phaseTable = (phases) => table([
    ['Step', (phase) => phaseLabel(phase.name)],
    ['From (ms)', (phase) => stamp(phase.startUs), true],
    ['Took', (phase) => duration(phase.endUs - phase.startUs), true],
    ['End', (phase) => phase.end.replace('-', ' ')],
    ['What', (phase) => phase.detail],
], phases, (phase) => phase.end !== 'done');

const callTable = (calls) => table([
    ['At (ms)', (call) => stamp(call.startUs), true],
    ['Took', (call) => duration(call.durationUs), true],
    ['', (call) => call.incoming ? '←' : '→'],
    ['Peer', (call) => call.peer],
    ['Interface', (call) => call.interface],
    ['Method', (call) => call.method + (call.oneway ? ' (oneway)' : '')],
    ['Bytes', (call) => count(call.bytes), true],
    ['Descriptors', (call) => count(call.descriptors), true],
    ['Status', callStatus],
], calls.slice(0, maxMarks), isBad);

function timelinePart({run, phases, calls}) {
    if (run.durationUs === 0) return '';
    if (!phases.length) return '';
    const shown = calls.length > maxMarks ? `, the first ${count(maxMarks)} shown` : '';
    const legend = [
        ['bar', 'the tool works'], ['bar waits', 'the tool waits'],
        ['bad', 'failed, timed out or cut short'], ['call', 'a binder transaction'],
    ];
    return html`<section id="timeline"><div class="section-head"><h2>Timeline</h2>
        <span class="muted">a step’s name shows it closer</span><span class="spring"></span>
        <button data-from="0" data-to="${run.durationUs}">Whole run</button></div>
        <div class="lanes"></div>
        <div class="legend">${legend.map(([look, text]) => html`<span><i class="${look}"></i>${text}</span>`)}</div>
        <details><summary>Table of ${plural(phases.length, 'step')}</summary>${phaseTable(phases)}</details>
        ${calls.length ? html`<details>
            <summary>Table of ${plural(calls.length, 'binder call')}${shown}</summary>
            ${callTable(calls)}</details>` : ''}</section>`;
}

// Draws the lanes, and draws them anew where a button tells from when to when.
function startTimeline(report) {
    const part = document.getElementById('timeline');
    if (!part) return;
    const place = part.querySelector('.lanes');
    let shown = [0, report.run.durationUs];
    const draw = () => {
        place.innerHTML = markup(lanes(report, ...shown, place.clientWidth));
    };
    part.addEventListener('click', ({target}) => {
        const {from, to} = target.dataset;
        if (from === undefined) return;
        const half = Math.max(to - from, 20) / 2;
        const middle = (Number(from) + Number(to)) / 2;
        shown = [Math.max(0, middle - half), Math.min(middle + half, Math.max(report.run.durationUs, 20))];
        const index = [...part.querySelectorAll('button')].indexOf(target);
        draw();
        part.querySelectorAll('button')[index].focus();  // it was drawn anew
    });
    addEventListener('resize', draw);
    draw();
}
