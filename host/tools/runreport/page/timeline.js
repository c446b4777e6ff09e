// The run over time: a row for each step, then calls, the services' log and errors as marks.

const maxCallRows = 2000;  // a browser is slow with more

// Steps of one name share a row; the rows are in the order of a run's first frame.
function phaseRows(phases) {
    const names = [...Object.keys(phaseLabels), ...phases.map((phase) => phase.name)];
    return [...new Set(names)]
            .map((name) => ({name, steps: phases.filter((phase) => phase.name === name)}))
            .filter((row) => row.steps.length);
}

// Steps that are none of the tool's work.
const isIdle = ({name}) => name === 'device' || name === 'exit';

function callText(call) {
    const name = `${call.interface.slice(call.interface.lastIndexOf('.') + 1)}.${call.method}`;
    const descriptors = call.descriptors ? `, ${plural(call.descriptors, 'descriptor')}` : '';
    return `${name} ${call.incoming ? 'from' : 'to'} ${call.peer}\nat ${stamp(call.startUs)} ms, ` +
            `took ${duration(call.durationUs)}, ${plural(call.bytes, 'byte')}${descriptors}, ${call.status}`;
}

function markRows({calls, log}) {
    const ofCall = (call) => ({
        startUs: call.startUs, endUs: call.startUs + call.durationUs, text: callText(call),
        failed: call.status !== 'OK', name: call.incoming ? call.method : '',
    });
    const ofLine = (line) =>
            ({startUs: line.timeUs, endUs: line.timeUs, text: `${line.tag}: ${line.message}`, name: ''});
    const isError = (line) => line.priority === 'E' || line.priority === 'F';
    return [
        ['Calls out', 'call', calls.filter((call) => !call.incoming).map(ofCall)],
        ['Calls in', 'call', calls.filter((call) => call.incoming).map(ofCall)],
        ['Services’ log', 'mark', log.filter((line) => line.from === 'services').map(ofLine)],
        ['Errors', 'mark error', log.filter(isError).map(ofLine)],
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

class Timeline {
    constructor(report, lanes) {
        this.report = report;
        this.rows = phaseRows(report.phases);
        this.marks = markRows(report);
        this.end = Math.max(report.run.durationUs, 1);
        this.lanes = lanes;
        lanes.addEventListener('pointerdown', (event) => this.startDrag(event));
        lanes.addEventListener('pointermove', (event) => this.drag(event, false));
        lanes.addEventListener('pointerup', (event) => this.drag(event, true));
        lanes.addEventListener('dblclick', () => this.showAll());
        addEventListener('resize', () => this.draw());
        this.showAll();
    }

    show(from, to) {
        const middle = (from + to) / 2;
        const half = Math.max(to - from, Math.min(20, this.end)) / 2;
        this.from = Math.max(0, middle - half);
        this.to = Math.min(this.end, middle + half);
        this.draw();
    }

    showAll() {
        this.show(0, this.end);
    }

    showSteps(steps, margin) {
        if (!steps.length) return;
        const [from, to] = [steps[0].startUs, steps[steps.length - 1].endUs];
        const around = margin && Math.max((to - from) * margin, 5);
        this.show(from - around, to + around);
    }

    zoom(factor) {
        const [middle, half] = [(this.from + this.to) / 2, (this.to - this.from) * factor / 2];
        this.show(middle - half, middle + half);
    }

    // Per cent of the plot's width. What is far outside is just outside: browsers limit lengths.
    at(micros) {
        const part = (micros - this.from) / (this.to - this.from) * 100;
        return Math.min(Math.max(part, -2), 102);
    }

    draw() {
        this.lanes.innerHTML = markup([
            this.axis(), this.rows.map((row) => this.phaseRow(row)),
            this.marks.map((row) => this.markRow(row)),
        ]);
        this.plot = this.lanes.querySelector('.plot');
    }

    axis() {
        const step = tickStep(this.to - this.from, this.lanes.clientWidth - 150);
        const ticks = [];
        for (let time = Math.ceil(this.from / step) * step; time <= this.to; time += step) {
            const text = this.at(time) > 97 ? '' : tickText(time, step);
            ticks.push(html`<span style="left: ${this.at(time)}%">${text}</span>`);
        }
        const lanes = 1 + this.rows.length + this.marks.length;
        return html`<div class="lane axis" style="--lanes: ${lanes}"><b></b>
            <div class="plot">${ticks}</div></div>`;
    }

    phaseRow({name, steps}) {
        return html`<div class="lane phase" data-phase="${name}">
            <b class="row-label" tabindex="0">${phaseLabel(name)}</b>
            <div class="plot">${steps.map((step) => this.bar(step))}${this.barText(steps)}</div></div>`;
    }

    bar(step) {
        const look = step.waits ? 'waits' : isIdle(step) ? 'idle' : '';
        const end = {failed: ', failed', 'timed-out': ', timed out', 'cut-short': ', the run ended here'};
        const tip = `${phaseLabel(step.name)}: ${duration(step.endUs - step.startUs)}` +
                `${end[step.end] || ''}${step.detail ? `\n${step.detail}` : ''}` +
                `\nfrom ${stamp(step.startUs)} to ${stamp(step.endUs)} ms`;
        return this.piece(`bar ${look} ${step.end}`, step.startUs, step.endUs, tip);
    }

    piece(look, startUs, endUs, tip) {
        const [start, end] = [this.at(startUs), this.at(endUs)];
        return html`<i class="${look}" style="left: ${start}%; width: ${end - start}%"
            data-tip="${tip}" role="img" aria-label="${tip}"></i>`;
    }

    // Behind the last bar, before the first or on it, where there is room.
    barText(steps) {
        const [start, end] = [this.at(steps[0].startUs), this.at(steps[steps.length - 1].endUs)];
        const total = steps.reduce((sum, step) => sum + step.endUs - step.startUs, 0);
        const text = duration(total) + (steps.length > 1 ? ` in ${steps.length} steps` : '') +
                (steps.some((step) => step.end === 'timed-out') ? ', timed out' : '');
        const detail = html` <span class="muted">${steps.length === 1 ? steps[0].detail : ''}</span>`;
        if (end < 0 || start > 100) return '';
        if (end < 65) return html`<span style="left: calc(${end}% + 7px)">${text} ${detail}</span>`;
        if (start > 25) return html`<span style="right: calc(${100 - start}% + 7px)">${text}</span>`;
        if (steps.some((step) => step.waits)) return '';  // hatched: nothing could be read on it
        return html`<span class="on-bar" style="left: calc(${Math.max(start, 0)}% + 7px)">${text}</span>`;
    }

    // Marks that would fall on one pixel become one, whose tip lists the first few.
    markRow([label, look, marks]) {
        const pixels = new Map();
        for (const mark of marks) {
            if (mark.endUs < this.from || mark.startUs > this.to) continue;
            const pixel = Math.round(this.at(mark.startUs) * 10);
            pixels.set(pixel, [...(pixels.get(pixel) || []), mark]);
        }
        const drawn = [...pixels.values()].map((some) => {
            const tips = some.slice(0, 5).map((mark) => mark.text);
            if (some.length > 5) tips.push(`and ${count(some.length - 5)} more`);
            const failed = some.some((mark) => mark.failed) ? 'failed' : '';
            const end = Math.max(...some.map((mark) => mark.endUs));
            return this.piece(`${look} ${failed}`, some[0].startUs, end, tips.join('\n'));
        });
        return html`<div class="lane"><b class="muted">${label}</b>
            <div class="plot">${drawn}${this.markNames(marks)}</div></div>`;
    }

    // A name behind each mark where there is room before the next.
    markNames(marks) {
        const named = marks.filter(({name}) => name && !name.startsWith('('));
        return named.map((mark, index) => {
            const start = this.at(mark.endUs);
            const next = index + 1 < named.length ? this.at(named[index + 1].startUs) : 100;
            const width = (mark.name.length * 6.6 + 10) / (this.lanes.clientWidth - 150) * 100;
            if (start < 0 || start + width > next) return '';
            return html`<span class="muted" style="left: calc(${start}% + 5px)">${mark.name}</span>`;
        });
    }

    timeAt(event) {
        const {left, width} = this.plot.getBoundingClientRect();
        const part = Math.min(Math.max((event.clientX - left) / width, 0), 1);
        return this.from + part * (this.to - this.from);
    }

    startDrag(event) {
        if (event.button !== 0 || event.clientX < this.plot.getBoundingClientRect().left) return;
        this.dragFrom = this.timeAt(event);
        this.plot.insertAdjacentHTML('beforeend', '<i class="selection"></i>');
        this.lanes.setPointerCapture(event.pointerId);
    }

    // Draws the selection up to the pointer; `ended` shows what was selected.
    drag(event, ended) {
        const selection = this.plot.querySelector('.selection');
        if (!selection) return;
        const times = [this.dragFrom, this.timeAt(event)].sort((a, b) => a - b);
        const [from, to] = times.map((time) => this.at(time));
        selection.style.left = `${from}%`;
        selection.style.width = `${to - from}%`;
        if (!ended) return;
        selection.remove();
        if (to - from > 0.5) this.show(...times);
    }
}

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
    ['Status', (call) => call.status],
], calls.slice(0, maxCallRows), (call) => call.status !== 'OK');

function timelinePart({phases, calls}) {
    if (!phases.length) return '';
    const shown = calls.length > maxCallRows ? `, the first ${count(maxCallRows)} shown` : '';
    const legend = [
        ['work', 'the tool works'], ['wait', 'the tool waits'],
        ['bad', 'failed, timed out or cut short'], ['calls', 'a binder transaction'],
    ];
    return html`<section id="timeline"><div class="section-head"><h2>Timeline</h2>
        <span class="muted">drag over a stretch, or click a step’s name, to look closer</span>
        <span class="spring"></span>
        <button aria-label="zoom in">+</button><button aria-label="zoom out">−</button>
        <button>Tool only</button><button>Whole run</button></div>
        <div class="lanes"></div>
        <div class="legend">${legend.map(([name, text]) => html`<span><i class="${name}"></i>${text}</span>`)}</div>
        <details><summary>Table of ${plural(phases.length, 'step')}</summary>${phaseTable(phases)}</details>
        <details><summary>Table of ${plural(calls.length, 'binder call')}${shown}</summary>
        ${callTable(calls)}</details></section>`;
}

// Makes the drawn part work.
function startTimeline(report) {
    const part = document.getElementById('timeline');
    if (!part) return;
    const timeline = new Timeline(report, part.querySelector('.lanes'));
    const actions = [
        () => timeline.zoom(0.5), () => timeline.zoom(2),
        () => timeline.showSteps(report.phases.filter((phase) => !isIdle(phase)), 0),
        () => timeline.showAll(),
    ];
    part.querySelectorAll('button').forEach((button, i) => button.addEventListener('click', actions[i]));
    const showRow = ({target, type, key}) => {
        const chosen = target.closest('.row-label') && (type === 'click' || key === 'Enter');
        if (!chosen) return;
        const {phase} = target.closest('.phase').dataset;
        timeline.showSteps(timeline.rows.find((row) => row.name === phase).steps, 0.15);
    };
    timeline.lanes.addEventListener('click', showRow);
    timeline.lanes.addEventListener('keydown', showRow);
    timeline.lanes.addEventListener('pointermove', showTip);
    timeline.lanes.addEventListener('pointerleave', showTip);
}

// Shows the text of what the pointer is over beside it.
function showTip({target, type, clientX, clientY}) {
    const tip = document.getElementById('tip');
    const text = type === 'pointermove' && target.dataset.tip;
    tip.hidden = !text;
    if (!text) return;
    tip.textContent = text;
    const left = Math.min(clientX + 14, innerWidth - tip.offsetWidth - 8);
    const fits = clientY + 18 + tip.offsetHeight < innerHeight;
    tip.style.left = `${Math.max(8, left)}px`;
    tip.style.top = `${fits ? clientY + 18 : clientY - tip.offsetHeight - 10}px`;
}
