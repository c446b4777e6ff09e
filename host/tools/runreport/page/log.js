// The log, filtered. The filter stands in the address: #priority=W&from=tool&text=words

const priorities = 'VDIWEF';
const rowsAtOnce = 1000;

class LogView {
    constructor(report) {
        this.lines = report.log;
        this.omitted = report.omittedLogLines;
        this.first = 0;  // of the rows shown, among those that pass the filter
        this.rows = make('div', {class: 'rows', tabindex: 0, role: 'log', 'aria-live': 'off'});
        this.note = make('span', {class: 'muted', id: 'shown'});
        this.priority = choice(
                'least priority',
                [['', 'all'], ['D', 'debug'], ['I', 'info'], ['W', 'warnings'], ['E', 'errors']],
                () => this.changed());
        this.from = choice(
                'from', [['', 'tool and services'], ['tool', 'tool'], ['services', 'services']],
                () => this.changed());
        this.text = make('input', {
            type: 'search',
            placeholder: 'text in tag or message',
            'aria-label': 'text in tag or message',
            oninput: () => this.typed()
        });
        addEventListener('hashchange', () => this.readAddress());
    }

    typed() {
        clearTimeout(this.pause);
        this.pause = setTimeout(() => this.changed(), 120);
    }

    changed() {
        const state = new URLSearchParams();
        if (this.priority.value) state.set('priority', this.priority.value);
        if (this.from.value) state.set('from', this.from.value);
        if (this.text.value) state.set('text', this.text.value);
        history.replaceState(null, '', `#${state}`);
        this.first = 0;
        this.draw();
    }

    readAddress() {
        const state = new URLSearchParams(location.hash.slice(1));
        const known =
                (select, value) => [...select.options].some((option) => option.value === value);
        const priority = state.get('priority') || '';
        this.priority.value = known(this.priority, priority) ? priority : '';
        this.from.value = known(this.from, state.get('from') || '') ? state.get('from') || '' : '';
        this.text.value = state.get('text') || '';
        this.first = 0;
        this.draw();
    }

    // Lines that no log call wrote have no priority; they count as info.
    passing() {
        const least = priorities.indexOf(this.priority.value || 'V');
        const words = this.text.value.toLowerCase();
        return this.lines.filter(
                (line) => priorities.indexOf(line.priority || 'I') >= least &&
                        (!this.from.value || line.from === this.from.value) &&
                        (!words || `${line.tag}: ${line.message}`.toLowerCase().includes(words)));
    }

    draw(marked) {
        const lines = this.passing();
        if (marked) this.first = Math.max(0, lines.indexOf(marked) - 20);
        const end = Math.min(this.first + rowsAtOnce, lines.length);
        this.note.textContent = `${plural(lines.length, 'line')} of ${count(this.lines.length)}` +
                (this.omitted ? `, ${count(this.omitted)} more in the files only` : '');
        const more = (text, first) =>
                make('div', {class: 'more'},
                     make('button', {
                         onclick: () => {
                             this.first = first;
                             this.draw();
                             this.rows.scrollTop = 0;
                         }
                     },
                          text));
        this.rows.replaceChildren(
                ...[this.first > 0 ? more('earlier lines', Math.max(0, this.first - rowsAtOnce)) :
                                     '',
                    ...lines.slice(this.first, end).map((line) => logRow(line, line === marked)),
                    end < lines.length ? more(`later lines (${count(lines.length - end)})`, end) :
                                         '',
                    lines.length ? '' :
                                   make('div', {class: 'empty'},
                                        this.lines.length ? 'No line passes the filter.' :
                                                            'There is no log.'),
        ].filter((part) => part !== ''));
    }

    // Shows the first line with this message among its neighbours.
    showMessage(message) {
        this.priority.value = this.from.value = this.text.value = '';
        this.changed();
        this.draw(this.lines.find((line) => line.message === message));
        const row = this.rows.querySelector('.found');
        if (row) row.scrollIntoView({block: 'center'});
    }
}

function choice(label, options, changed) {
    return make(
            'select', {'aria-label': label, onchange: changed},
            options.map(([value, text]) => make('option', {value}, text)));
}

function logRow(line, found) {
    const cell = (name, text) => make('span', {class: name}, text);
    return make(
            'div', {
                class: `row ${line.priority}${found ? ' found' : ''}`,
                title: line.pid ? `process ${line.pid}, thread ${line.tid}` : null
            },
            cell('time', stamp(line.timeUs)), cell(`from ${line.from}`, line.from),
            cell('priority', line.priority), cell('tag-name', line.tag),
            cell('message', line.message));
}

let logView = null;
const showMessage = (message) => logView.showMessage(message);

function logPart(report) {
    logView = new LogView(report);
    const labelled = (text, control) => make('label', {}, text, control);
    const part =
            make('section', {id: 'log'},
                 make('div', {class: 'section-head'}, make('h2', {}, 'Log'), logView.note,
                      make('span', {class: 'spring'}), labelled('at least', logView.priority),
                      labelled('from', logView.from), logView.text),
                 make('div', {class: 'muted', style: 'font-size: 12.5px; margin: -8px 0 8px'},
                      'times in milliseconds since the run’s start'),
                 logView.rows);
    logView.readAddress();
    return part;
}
