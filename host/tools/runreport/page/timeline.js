// The run over time: a row for each step, then calls, the services' log and errors as marks.

const rowHeight = 26;
const axisHeight = 26;

class Timeline {
    constructor(report) {
        this.report = report;
        this.rows = phaseRows(report.phases);
        this.marks = markRows(report);
        this.end = Math.max(report.run.durationUs, 1);
        this.svg = makeSvg(
                'svg', {role: 'img', 'aria-label': 'Timeline; the tables below hold its values'});
        this.svg.addEventListener('pointerdown', (event) => this.startDrag(event));
        this.svg.addEventListener('pointermove', (event) => this.drag(event));
        this.svg.addEventListener('pointerup', (event) => this.endDrag(event));
        this.svg.addEventListener('dblclick', () => this.show(0, this.end));
        this.from = 0;
        this.to = this.end;
    }

    show(from, to) {
        const least = Math.min(20, this.end);
        const middle = (from + to) / 2;
        const half = Math.max(to - from, least) / 2;
        this.from = Math.max(0, middle - half);
        this.to = Math.min(this.end, middle + half);
        this.draw();
    }

    // From the tool's first line on to where it begins to exit.
    showTool() {
        const steps = this.report.phases.filter(
                (phase) => phase.name !== 'device' && phase.name !== 'exit');
        if (steps.length) this.show(steps[0].startUs, steps[steps.length - 1].endUs);
    }

    zoom(factor) {
        const middle = (this.from + this.to) / 2;
        const half = (this.to - this.from) * factor / 2;
        this.show(middle - half, middle + half);
    }

    showRow(row) {
        const from = row.steps[0].startUs;
        const to = row.steps[row.steps.length - 1].endUs;
        const margin = Math.max((to - from) * 0.15, 5);
        this.show(from - margin, to + margin);
    }

    draw() {
        const width =
                Math.max(this.svg.parentElement ? this.svg.parentElement.clientWidth : 0, 320);
        const left = width < 600 ? 110 : 140;
        const right = width - 12;
        const perMicro = (right - left) / (this.to - this.from);
        this.scale = {left, right, x: (micros) => left + (micros - this.from) * perMicro};
        const height = axisHeight + (this.rows.length + this.marks.length) * rowHeight + 6;
        this.svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
        this.svg.setAttribute('height', height);
        this.svg.replaceChildren(
                hatching(), clipping(left, right, height), ...this.axis(height),
                ...this.rows.map(
                        (row, index) => this.phaseRow(row, axisHeight + index * rowHeight, index)),
                ...this.marks.map(
                        (row, index) => this.markRow(
                                row, axisHeight + (this.rows.length + index) * rowHeight + 6)));
    }

    axis(height) {
        const step = tickStep(this.to - this.from, this.scale.right - this.scale.left);
        const parts = [];
        for (let at = Math.ceil(this.from / step) * step; at <= this.to; at += step) {
            const x = this.scale.x(at);
            parts.push(
                    makeSvg('line', {class: 'grid', x1: x, x2: x, y1: axisHeight - 6, y2: height}));
            if (x > this.scale.right - 30 && at !== 0) continue;
            parts.push(makeSvg('text', {class: 'faint', x: x + 3, y: 14}, tickText(at, step)));
        }
        return parts;
    }

    phaseRow(row, y, index) {
        const total = row.steps.reduce((sum, step) => sum + step.endUs - step.startUs, 0);
        const label = makeSvg(
                'text', {class: 'row-label', x: 0, y: y + 17, tabindex: 0}, phaseLabel(row.name));
        label.addEventListener('click', () => this.showRow(row));
        label.addEventListener('keydown', (event) => {
            if (event.key === 'Enter') this.showRow(row);
        });
        const stripe = index % 2 ?
                '' :
                makeSvg('rect', {class: 'stripe', x: 0, y, width: '100%', height: rowHeight});
        const bars = row.steps.map((step) => this.bar(step, y));
        const text = duration(total) +
                (row.steps.length > 1 ? ` in ${row.steps.length} steps` : '') +
                (row.steps.some((step) => step.end === 'timed-out') ? ', timed out' : '');
        const drawn = makeSvg('g', {'clip-path': 'url(#plot)'}, bars, this.barText(row, text, y));
        return makeSvg('g', {class: 'phase', 'data-phase': row.name}, stripe, label, drawn);
    }

    bar(step, y) {
        const x = this.scale.x(step.startUs);
        const width = Math.max(this.scale.x(step.endUs) - x, 3);
        const idle = step.name === 'device' || step.name === 'exit' ? 'idle' : '';
        const ending = {
            failed: 'failed',
            'timed-out': 'timed out',
            'cut-short': 'the run ended here'
        };
        const text = `${phaseLabel(step.name)}: ${duration(step.endUs - step.startUs)}` +
                (ending[step.end] ? `, ${ending[step.end]}` : '') +
                (step.detail ? `\n${step.detail}` : '') +
                `\nfrom ${stamp(step.startUs)} to ${stamp(step.endUs)} ms`;
        return withTip(
                makeSvg('rect', {
                    class: `bar ${step.waits ? 'waits' : idle} ${step.end}`,
                    x,
                    y: y + 5,
                    width,
                    height: rowHeight - 10,
                    rx: 2
                }),
                text);
    }

    // Behind the last bar, before the first or on it, wherever there is room; a detail where both
    // fit.
    barText(row, text, y) {
        const detail = row.steps.length === 1 ? row.steps[0].detail : '';
        const end = Math.max(
                this.scale.x(row.steps[row.steps.length - 1].endUs),
                this.scale.x(row.steps[0].startUs) + 3);
        const start = this.scale.x(row.steps[0].startUs);
        const reach = (characters) => characters * 6.6 + 14;
        const shows = (words) => end + reach(words.length) < this.scale.right;
        if (end < this.scale.left || start > this.scale.right) return '';
        if (detail && shows(text + detail)) {
            return makeSvg(
                    'text', {x: end + 7, y: y + 17}, text,
                    makeSvg('tspan', {class: 'faint', dx: 9, fill: 'var(--muted)'}, detail));
        }
        if (shows(text)) return makeSvg('text', {x: end + 7, y: y + 17}, text);
        if (start - reach(text.length) > this.scale.left) {
            return makeSvg('text', {x: start - 7, y: y + 17, 'text-anchor': 'end'}, text);
        }
        if (row.steps.some((step) => step.waits))
            return '';  // hatched: nothing could be read on it
        return makeSvg(
                'text', {class: 'on-bar', x: Math.max(start, this.scale.left) + 7, y: y + 17},
                text);
    }

    markRow(row, y) {
        const marks =
                mergeMarks(row.marks, this.scale)
                        .map((mark) => withTip(
                                     makeSvg('rect', {
                                         class: `${row.className} ${mark.failed ? 'failed' : ''}`,
                                         x: mark.x - 1,
                                         y: y + 5,
                                         width: Math.max(mark.width, 3),
                                         height: rowHeight - 12,
                                         rx: 1
                                     }),
                                     mark.texts.join('\n')));
        const names = row.named ?
                this.markNames(row.marks.filter((mark) => !mark.name.startsWith('(')), y) :
                '';
        return makeSvg(
                'g', {class: 'marks'},
                makeSvg('text', {x: 0, y: y + 17, fill: 'var(--muted)'}, row.label),
                makeSvg('g', {'clip-path': 'url(#plot)'}, marks, names));
    }

    // A name behind each mark, or before it, where no other mark or name is in the way.
    markNames(marks, y) {
        let taken = this.scale.left;
        return marks.map((mark, index) => {
            const [start, end] = [this.scale.x(mark.startUs) - 5, this.scale.x(mark.endUs) + 5];
            const width = mark.name.length * 6.4;
            const next = index + 1 < marks.length ? this.scale.x(marks[index + 1].startUs) - 6 :
                                                    this.scale.right;
            const behind = end + width < next;
            const before = !behind && start - width > taken;
            taken = behind ? end + width : end;
            if (start < this.scale.left || !(behind || before)) return '';
            return makeSvg(
                    'text', {
                        class: 'faint',
                        x: behind ? end : start,
                        y: y + 17,
                        'text-anchor': behind ? null : 'end'
                    },
                    mark.name);
        });
    }

    timeAt(event) {
        const box = this.svg.getBoundingClientRect();
        const {left, right} = this.scale;
        const x = Math.min(Math.max(event.clientX - box.left, left), right);
        return this.from + (x - left) / (right - left) * (this.to - this.from);
    }

    startDrag(event) {
        if (event.button !== 0 ||
            event.clientX - this.svg.getBoundingClientRect().left < this.scale.left)
            return;
        this.dragFrom = this.timeAt(event);
        this.selection = makeSvg(
                'rect',
                {class: 'selection', y: 0, height: '100%', width: 0, 'pointer-events': 'none'});
        this.svg.append(this.selection);
        this.svg.setPointerCapture(event.pointerId);
    }

    drag(event) {
        if (!this.selection) return;
        const ends = [this.scale.x(this.dragFrom), this.scale.x(this.timeAt(event))].sort(
                (a, b) => a - b);
        this.selection.setAttribute('x', ends[0]);
        this.selection.setAttribute('width', ends[1] - ends[0]);
    }

    endDrag(event) {
        if (!this.selection) return;
        const ends = [this.dragFrom, this.timeAt(event)].sort((a, b) => a - b);
        this.selection.remove();
        this.selection = null;
        if (this.scale.x(ends[1]) - this.scale.x(ends[0]) > 4) this.show(...ends);
    }
}

function hatching() {
    const pattern = (id, name) => makeSvg(
            'pattern', {
                id,
                width: 6,
                height: 6,
                patternUnits: 'userSpaceOnUse',
                patternTransform: 'rotate(45)'
            },
            makeSvg('rect', {class: `${name}-ground`, width: 6, height: 6}),
            makeSvg('line',
                    {class: `${name}-line`, x1: 1, x2: 1, y1: 0, y2: 6, 'stroke-width': 2}));
    return makeSvg('defs', {}, pattern('hatch', 'hatch'), pattern('hatch-bad', 'hatch-bad'));
}

function clipping(left, right, height) {
    return makeSvg(
            'clipPath', {id: 'plot'},
            makeSvg('rect', {x: left - 2, y: 0, width: right - left + 14, height}));
}

const timelineLegend = () =>
        make('div', {class: 'legend'},
             ['work', 'wait', 'bad', 'calls'].map(
                     (name, index) => make('span', {}, make('i', {class: name}), [
                         'the tool works', 'the tool waits', 'failed, timed out or cut short',
                         'a binder transaction'
                     ][index])));

function timelinePart(report) {
    if (!report.phases.length) return '';
    const timeline = new Timeline(report);
    const plot = make('div', {class: 'plot'}, timeline.svg);
    queueMicrotask(() => timeline.draw());  // when the page is whole
    addEventListener('resize', () => timeline.draw());
    return make(
            'section', {id: 'timeline'},
            make('div', {class: 'section-head'}, make('h2', {}, 'Timeline'),
                 make('span', {class: 'muted'},
                      'drag over a stretch, or click a step’s name, to look closer'),
                 make('span', {class: 'spring'}),
                 make('button', {onclick: () => timeline.zoom(0.5), 'aria-label': 'zoom in'}, '+'),
                 make('button', {onclick: () => timeline.zoom(2), 'aria-label': 'zoom out'}, '−'),
                 make('button', {onclick: () => timeline.showTool()}, 'Tool only'),
                 make('button', {onclick: () => timeline.show(0, timeline.end)}, 'Whole run')),
            plot, timelineLegend(),
            make('details', {},
                 make('summary', {}, `Table of ${plural(report.phases.length, 'step')}`),
                 phaseTable(report)),
            make('details', {}, make('summary', {}, callTableTitle(report.calls)),
                 callTable(report)));
}
