// The run over time: a row for each step, then calls, the services' log and errors as marks.

const rowHeight = 26;
const axisHeight = 26;
const maxCallRows = 2000;  // a browser is slow with more

// Steps of one name share a row; the rows are in the order of a run's first frame.
function phaseRows(phases) {
    const names = [...Object.keys(phaseLabels), ...phases.map((phase) => phase.name)];
    return [...new Set(names)]
            .map((name) => ({name, steps: phases.filter((phase) => phase.name === name)}))
            .filter((row) => row.steps.length);
}

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
    constructor(report, svg) {
        this.report = report;
        this.rows = phaseRows(report.phases);
        this.marks = markRows(report);
        this.end = Math.max(report.run.durationUs, 1);
        this.svg = svg;
        svg.addEventListener('pointerdown', (event) => this.startDrag(event));
        svg.addEventListener('pointermove', (event) => this.drag(event));
        svg.addEventListener('pointerup', (event) => this.endDrag(event));
        svg.addEventListener('dblclick', () => this.showAll());
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

    // From the tool's first line on to where it begins to exit.
    showTool() {
        this.showSteps(this.report.phases.filter(({name}) => name !== 'device' && name !== 'exit'), 0);
    }

    showSteps(steps, margin) {
        if (!steps.length) return;
        const [from, to] = [steps[0].startUs, steps[steps.length - 1].endUs];
        const around = margin && Math.max((to - from) * margin, 5);
        this.show(from - around, to + around);
    }

    showRow(name) {
        this.showSteps(this.rows.find((row) => row.name === name).steps, 0.15);
    }

    zoom(factor) {
        const [middle, half] = [(this.from + this.to) / 2, (this.to - this.from) * factor / 2];
        this.show(middle - half, middle + half);
    }

    x(micros) {
        return this.left + (micros - this.from) * (this.right - this.left) / (this.to - this.from);
    }

    draw() {
        const width = Math.max(this.svg.parentElement.clientWidth, 320);
        const height = axisHeight + (this.rows.length + this.marks.length) * rowHeight + 6;
        const below = axisHeight + this.rows.length * rowHeight + 6;
        [this.left, this.right] = [width < 600 ? 110 : 140, width - 12];
        this.svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
        this.svg.setAttribute('height', height);
        this.svg.innerHTML = markup(html`<defs>${['hatch', 'hatch-bad'].map((name) => html`
            <pattern id="${name}" width="6" height="6" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
            <rect class="${name}-ground" width="6" height="6"/>
            <line class="${name}-line" x1="1" x2="1" y1="0" y2="6" stroke-width="2"/></pattern>`)}
            <clipPath id="plot"><rect x="${this.left - 2}" y="0" width="${this.right - this.left + 14}"
            height="${height}"/></clipPath></defs>${this.axis(height)}${
            this.rows.map((row, i) => this.phaseRow(row, axisHeight + i * rowHeight, i))}${
            this.marks.map((row, i) => this.markRow(row, below + i * rowHeight))}`);
    }

    axis(height) {
        const step = tickStep(this.to - this.from, this.right - this.left);
        const parts = [];
        for (let at = Math.ceil(this.from / step) * step; at <= this.to; at += step) {
            const x = this.x(at);
            const text = html`<text class="faint" x="${x + 3}" y="14">${tickText(at, step)}</text>`;
            parts.push(html`<line class="grid" x1="${x}" x2="${x}" y1="${axisHeight - 6}" y2="${height}"/>${
                x > this.right - 30 && at !== 0 ? '' : text}`);
        }
        return parts;
    }

    phaseRow({name, steps}, y, index) {
        const total = steps.reduce((sum, step) => sum + step.endUs - step.startUs, 0);
        const text = duration(total) + (steps.length > 1 ? ` in ${steps.length} steps` : '') +
                (steps.some((step) => step.end === 'timed-out') ? ', timed out' : '');
        const stripe = html`<rect class="stripe" x="0" y="${y}" width="100%" height="${rowHeight}"/>`;
        return html`<g class="phase" data-phase="${name}">${index % 2 ? '' : stripe}
            <text class="row-label" x="0" y="${y + 17}" tabindex="0">${phaseLabel(name)}</text>
            <g clip-path="url(#plot)">${steps.map((step) => this.bar(step, y))}${this.barText(steps, text, y)}</g></g>`;
    }

    bar(step, y) {
        const x = this.x(step.startUs);
        const look = step.waits ? 'waits' : step.name === 'device' || step.name === 'exit' ? 'idle' : '';
        const end = {failed: ', failed', 'timed-out': ', timed out', 'cut-short': ', the run ended here'};
        const tip = `${phaseLabel(step.name)}: ${duration(step.endUs - step.startUs)}` +
                `${end[step.end] || ''}${step.detail ? `\n${step.detail}` : ''}` +
                `\nfrom ${stamp(step.startUs)} to ${stamp(step.endUs)} ms`;
        return html`<rect class="bar ${look} ${step.end}" x="${x}" y="${y + 5}" rx="2" data-tip="${tip}"
            aria-label="${tip}" width="${Math.max(this.x(step.endUs) - x, 3)}" height="${rowHeight - 10}"/>`;
    }

    // Behind the last bar, before the first or on it, wherever there is room; a detail if it fits.
    barText(steps, text, y) {
        const detail = steps.length === 1 ? steps[0].detail : '';
        const start = this.x(steps[0].startUs);
        const end = Math.max(this.x(steps[steps.length - 1].endUs), start + 3);
        const reach = (words) => words.length * 6.6 + 14;
        const at = (x, look, anchor, more) => html`<text class="${look}" x="${x}" y="${y + 17}"
            text-anchor="${anchor}">${text}${more}</text>`;
        if (end < this.left || start > this.right) return '';
        if (end + reach(text) < this.right) {
            const fits = detail && end + reach(text + detail) < this.right;
            return at(end + 7, '', 'start', fits ? html`<tspan class="faint" dx="9">${detail}</tspan>` : '');
        }
        if (start - reach(text) > this.left) return at(start - 7, '', 'end', '');
        if (steps.some((step) => step.waits)) return '';  // hatched: nothing could be read on it
        return at(Math.max(start, this.left) + 7, 'on-bar', 'start', '');
    }

    // Marks that would fall on one pixel become one, whose tip lists the first few.
    markRow([label, look, marks], y) {
        const pixels = new Map();
        for (const mark of marks) {
            const x = Math.round(this.x(mark.startUs));
            if (x < this.left - 1 || x > this.right + 1) continue;
            pixels.set(x, [...(pixels.get(x) || []), mark]);
        }
        const drawn = [...pixels].map(([x, some]) => {
            const width = Math.max(3, ...some.map((mark) => this.x(mark.endUs) - this.x(mark.startUs)));
            const tips = some.slice(0, 5).map((mark) => mark.text);
            if (some.length > 5) tips.push(`and ${count(some.length - 5)} more`);
            const failed = some.some((mark) => mark.failed) ? 'failed' : '';
            return html`<rect class="${look} ${failed}" x="${x - 1}" y="${y + 5}" width="${width}"
                height="${rowHeight - 12}" rx="1" data-tip="${tips.join('\n')}" aria-label="${tips.join('\n')}"/>`;
        });
        const named = marks.filter(({name}) => name && !name.startsWith('('));
        return html`<g class="marks"><text class="muted" x="0" y="${y + 17}">${label}</text>
            <g clip-path="url(#plot)">${drawn}${this.markNames(named, y)}</g></g>`;
    }

    // A name behind each mark, or before it, where no other mark or name is in the way.
    markNames(marks, y) {
        let taken = this.left;
        return marks.map((mark, index) => {
            const [start, end] = [this.x(mark.startUs) - 5, this.x(mark.endUs) + 5];
            const width = mark.name.length * 6.4;
            const next = index + 1 < marks.length ? this.x(marks[index + 1].startUs) - 6 : this.right;
            const behind = end + width < next;
            const before = !behind && start - width > taken;
            taken = behind ? end + width : end;
            if (start < this.left || !(behind || before)) return '';
            return html`<text class="faint" x="${behind ? end : start}" y="${y + 17}"
                text-anchor="${behind ? 'start' : 'end'}">${mark.name}</text>`;
        });
    }

    timeAt(event) {
        const x = event.clientX - this.svg.getBoundingClientRect().left;
        const part = (x - this.left) / (this.right - this.left);
        return this.from + Math.min(Math.max(part, 0), 1) * (this.to - this.from);
    }

    startDrag(event) {
        const x = event.clientX - this.svg.getBoundingClientRect().left;
        if (event.button !== 0 || x < this.left) return;
        this.dragFrom = this.timeAt(event);
        this.svg.insertAdjacentHTML('beforeend', '<rect class="selection" y="0" height="100%"/>');
        this.svg.setPointerCapture(event.pointerId);
    }

    dragged(event) {
        return [this.dragFrom, this.timeAt(event)].sort((a, b) => a - b);
    }

    drag(event) {
        const selection = this.svg.querySelector('.selection');
        if (!selection) return;
        const [from, to] = this.dragged(event).map((time) => this.x(time));
        selection.setAttribute('x', from);
        selection.setAttribute('width', to - from);
    }

    endDrag(event) {
        const selection = this.svg.querySelector('.selection');
        if (!selection) return;
        selection.remove();
        const [from, to] = this.dragged(event);
        if (this.x(to) - this.x(from) > 4) this.show(from, to);
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
        <div class="plot"><svg role="img" aria-label="Timeline; the tables below hold its values">
        </svg></div>
        <div class="legend">${legend.map(([name, text]) => html`<span><i class="${name}"></i>${text}</span>`)}</div>
        <details><summary>Table of ${plural(phases.length, 'step')}</summary>${phaseTable(phases)}</details>
        <details><summary>Table of ${plural(calls.length, 'binder call')}${shown}</summary>
        ${callTable(calls)}</details></section>`;
}

// Makes the drawn part work.
function startTimeline(report) {
    const part = document.getElementById('timeline');
    if (!part) return;
    const timeline = new Timeline(report, part.querySelector('svg'));
    const actions = [
        () => timeline.zoom(0.5), () => timeline.zoom(2), () => timeline.showTool(),
        () => timeline.showAll(),
    ];
    part.querySelectorAll('button').forEach((button, i) => button.addEventListener('click', actions[i]));
    const showRow = ({target, type, key}) => {
        const chosen = target.closest('.row-label') && (type === 'click' || key === 'Enter');
        if (chosen) timeline.showRow(target.closest('.phase').dataset.phase);
    };
    timeline.svg.addEventListener('click', showRow);
    timeline.svg.addEventListener('keydown', showRow);
    timeline.svg.addEventListener('pointermove', showTip);
    timeline.svg.addEventListener('pointerleave', showTip);
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
