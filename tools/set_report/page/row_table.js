// A table with any number of rows. Only the rows in view are elements. The user can search and sort the table.
//
// columns: { title, text(row), sort(row), width, number, wide, bad(row) }. A wide column isn't shown in a narrow window. Sorting
// compares the results of `sort`, or those of `text` if there is no `sort`. If `bad` is true for a row, its cell is highlighted.
// options: { name, thing, search(row), choices: [[text, keeps(row)], ...], open(row), empty, sorted }. `sorted` is the index of the column
// by which the rows are sorted at first.

const RowHeight = 32;
const TallestSpace = 8_000_000; // pixels. Browsers can't lay out elements that are much taller.
const PrintedRows = 1000;

class RowTable {
  constructor(root, columns, options) {
    Object.assign(this, { columns, options, rows: [], order: [], shown: [], active: 0, sorted: -1, descending: false, first: -1 });
    this.id = root.id;
    this.status = element("output", { role: "status" });
    this.body = element("tbody");
    this.table = element("table", { class: "rows", role: "grid", tabindex: "0", "aria-labelledby": `${this.id}-caption`, onkeydown: event => this.pressed(event) },
      element("caption", { class: "spoken", id: `${this.id}-caption` }, options.name),
      element("thead", {}, element("tr", { "aria-rowindex": "1" }, ...columns.map((column, at) => this.headOf(column, at)))), this.body);
    this.frame = element("div", { class: "frame", onscroll: () => this.render() }, this.table);
    this.empty = element("p", { class: "empty", hidden: true }, options.empty ?? "Nothing.");
    root.replaceChildren(this.toolsOf(), this.frame, this.empty);
    this.body.addEventListener("click", event => this.clicked(event));
    new ResizeObserver(() => this.render(true)).observe(this.frame);
    if (options.sorted !== undefined) this.markSorted(options.sorted);
    addEventListener("beforeprint", () => this.render(true, PrintedRows));
    addEventListener("afterprint", () => this.render(true));
  }

  headOf(column, at) {
    return element("th", { scope: "col", class: classes(column.width ?? "w-name", column.number && "number", column.wide && "wide"), "aria-sort": "none" },
      button(column.title, () => this.sortBy(at)));
  }

  toolsOf() {
    const { name, choices } = this.options;
    this.input = element("input", { type: "search", id: `${this.id}-search`, autocomplete: "off", spellcheck: "false",
      oninput: () => this.filter(), onkeydown: event => event.key === "ArrowDown" && this.table.focus() });
    const tools = element("div", { class: "tools" }, element("label", { for: `${this.id}-search` }, `Search ${name.toLowerCase()}`), this.input);
    if (choices) {
      this.choice = element("select", { id: `${this.id}-choice`, "aria-label": `Which ${name.toLowerCase()}`, onchange: () => this.filter() },
        ...choices.map(([text], at) => element("option", { value: at }, text)));
      tools.append(this.choice);
    }
    tools.append(this.status);
    return tools;
  }

  setRows(rows) {
    this.rows = rows;
    this.order = rows;
    if (this.sorted >= 0) this.sortRows();
    this.filter();
  }

  sortBy(at) {
    this.descending = this.sorted === at && !this.descending;
    this.markSorted(at);
    this.sortRows();
    this.filter();
  }

  markSorted(at) {
    this.sorted = at;
    [...this.table.tHead.rows[0].cells].forEach((head, number) =>
      head.setAttribute("aria-sort", number !== at ? "none" : this.descending ? "descending" : "ascending"));
  }

  // Rows that compare as equal keep their order in the set.
  sortRows() {
    const column = this.columns[this.sorted];
    const keyOf = column.sort ?? column.text;
    const keyed = this.rows.map(row => ({ row, key: keyOf(row) }));
    const sign = this.descending ? -1 : 1;
    keyed.sort((left, right) => left.key < right.key ? -sign : left.key > right.key ? sign : 0);
    this.order = keyed.map(({ row }) => row);
  }

  // Shows only the rows that contain all words of the search.
  filter() {
    const words = this.input.value.toLowerCase().split(/\s+/).filter(Boolean);
    const keeps = this.choice ? this.options.choices[this.choice.value][1] : null;
    const { search } = this.options;
    this.shown = words.length === 0 && !keeps ? this.order : this.order.filter(row => {
      if (keeps && !keeps(row)) return false;
      const text = words.length > 0 ? search(row) : "";
      return words.every(word => text.includes(word));
    });
    this.status.textContent = (this.shown.length === this.rows.length ? "" : `${count(this.shown.length)} of `) + counted(this.rows.length, this.options.thing);
    this.table.setAttribute("aria-rowcount", this.shown.length + 1);
    this.frame.hidden = this.shown.length === 0;
    this.empty.hidden = this.shown.length !== 0;
    this.active = 0;
    this.frame.scrollTop = 0;
    this.render(true);
  }

  spaceHeight() {
    return Math.min(this.shown.length * RowHeight, TallestSpace);
  }

  // How many rows have room in the frame below the head of the table.
  visibleRows() {
    return Math.max(1, Math.floor(this.frame.clientHeight / RowHeight) - 1);
  }

  // How far the frame can scroll, in pixels.
  scrollRange() {
    return Math.max(1, this.table.tHead.offsetHeight + this.spaceHeight() - this.frame.clientHeight);
  }

  // The index of the first row in view. If the table has so many rows that TallestSpace limits its height, it scrolls by several
  // rows at a time.
  firstInView() {
    const rows = Math.max(0, this.shown.length - this.visibleRows());
    return Math.round(Math.min(1, this.frame.scrollTop / this.scrollRange()) * rows);
  }

  render(always = false, most = 0) {
    const seen = this.firstInView();
    const first = most ? 0 : Math.max(0, seen - 5);
    const last = Math.min(this.shown.length, most || seen + this.visibleRows() + 6);
    if (first === this.first && !always) return;
    this.first = first;
    const tall = this.shown.length * RowHeight > TallestSpace;
    const above = most ? 0 : tall ? Math.max(0, this.frame.scrollTop - (seen - first) * RowHeight) : first * RowHeight;
    const below = most ? 0 : Math.max(0, this.spaceHeight() - above - (last - first) * RowHeight);
    const rows = [];
    for (let at = first; at < last; at++) rows.push(this.rowOf(at));
    if (most && this.shown.length > most) rows.push(this.noteRow(`Only the first ${counted(most, "row")} of ${count(this.shown.length)} are printed.`));
    this.body.replaceChildren(this.spaceRow(above), ...rows, this.spaceRow(below));
    this.markActive();
  }

  rowOf(at) {
    const row = this.shown[at];
    const cells = this.columns.map(column => {
      const text = shortened(column.text(row));
      return element("td", { class: classes(column.number && "number", column.wide && "wide", column.bad?.(row) && "bad-text") }, text);
    });
    const made = element("tr", { id: `${this.id}-${at}`, "aria-rowindex": at + 2, "aria-selected": "false" }, ...cells);
    made.dataset.at = at;
    return made;
  }

  spaceRow(height) {
    const row = element("tr", { class: "space", "aria-hidden": "true" }, element("td"));
    row.style.height = `${height}px`;
    row.hidden = height === 0;
    return row;
  }

  noteRow(text) {
    return element("tr", { class: "note" }, element("td", { colspan: this.columns.length }, text));
  }

  markActive() {
    for (const row of this.body.rows)
      if (row.dataset.at !== undefined) row.setAttribute("aria-selected", Number(row.dataset.at) === this.active);
    if (byId(`${this.id}-${this.active}`)) this.table.setAttribute("aria-activedescendant", `${this.id}-${this.active}`);
    else this.table.removeAttribute("aria-activedescendant");
  }

  clicked(event) {
    const row = event.target.closest("tr");
    if (row?.dataset.at === undefined) return;
    this.active = Number(row.dataset.at);
    this.markActive();
    this.options.open(this.shown[this.active]);
  }

  pressed(event) {
    if (event.target !== this.table || event.ctrlKey || event.altKey || event.metaKey) return;
    const page = this.visibleRows();
    const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity };
    if (event.key === "Enter" && this.shown[this.active]) this.options.open(this.shown[this.active]);
    else if (event.key in steps) this.moveTo(this.active + steps[event.key]);
    else return;
    event.preventDefault();
  }

  moveTo(at) {
    this.active = Math.max(0, Math.min(this.shown.length - 1, at));
    const visible = this.visibleRows();
    const seen = this.firstInView();
    const wanted = this.active < seen ? this.active : this.active >= seen + visible ? this.active - visible + 1 : seen;
    const rows = Math.max(1, this.shown.length - visible);
    if (wanted !== seen) this.frame.scrollTop = wanted / rows * this.scrollRange();
    this.render(true);
  }
}
