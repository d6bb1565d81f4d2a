// The sets as bars in the order of their dates. For the keyboard and for screen readers the bars are radio buttons.

const ChartHeight = 150;
const NarrowestBar = 10; // pixels from one bar to the next
const WidestBar = 56;
const LabelWidth = 84;
const ScaleWidth = 64;
const MarkHeight = 18; // pixels for the mark of a damaged set, above the highest bar

class Timeline {
  constructor(root, choose) {
    Object.assign(this, { root, choose, chosen: sets.length - 1 });
    new ResizeObserver(() => this.draw()).observe(root);
  }

  select(set) {
    this.chosen = set;
    this.draw();
  }

  draw() {
    const space = this.root.clientWidth - 24 - ScaleWidth;
    const pitch = Math.max(NarrowestBar, Math.min(WidestBar, space / sets.length));
    const width = ScaleWidth + Math.max(pitch * sets.length, LabelWidth);
    const height = ChartHeight + MarkHeight + 26;
    const largest = Math.max(1, ...sets.map(set => set.packed));
    const hadFocus = this.root.contains(document.activeElement);
    this.columns = sets.map((set, at) => this.columnOf(set, at, pitch, largest));
    const chart = drawn("svg", { width, height, viewBox: `0 0 ${width} ${height}`, role: "radiogroup", "aria-label": "Sets by date", onkeydown: event => this.pressed(event) },
      ...this.scale(largest, width), ...this.labels(pitch), ...this.columns);
    const { scrollLeft } = this.root;
    this.root.replaceChildren(chart);
    this.root.scrollLeft = this.wasDrawn ? scrollLeft : width; // the newest sets are on the right
    this.wasDrawn = true;
    if (hadFocus) this.columns[this.chosen].focus();
  }

  columnOf(set, at, pitch, largest) {
    const height = Math.max(2, set.packed / largest * ChartHeight);
    const x = ScaleWidth + at * pitch;
    const gap = Math.min(6, pitch / 5);
    const bottom = ChartHeight + MarkHeight;
    const state = isDamaged(set) ? "damaged" : "nothing damaged found";
    const label = `${setName(at)}, ${counted(set.items, "item")}, ${size(set.packed)}, ${state}`;
    const column = drawn("g", { class: classes("column", isDamaged(set) && "damaged"), role: "radio", "aria-label": label, "aria-checked": String(at === this.chosen),
      tabindex: at === this.chosen ? "0" : "-1", onclick: () => this.take(at) },
      drawn("title", {}, label),
      drawn("rect", { class: "hit", x, y: 1, width: pitch, height: bottom - 1, rx: 4 }),
      drawn("rect", { class: "size", x: x + gap / 2, y: bottom - height, width: pitch - gap, height, rx: Math.min(3, pitch / 6) }));
    if (isDamaged(set)) column.append(drawn("text", { class: "mark", x: x + pitch / 2, y: bottom - height - 4, "text-anchor": "middle", "aria-hidden": "true" }, "!"));
    return column;
  }

  scale(largest, width) {
    return [0, .5, 1].flatMap(part => {
      const y = ChartHeight * (1 - part) + MarkHeight + .5;
      return [drawn("line", { x1: ScaleWidth, x2: width, y1: y, y2: y }),
        drawn("text", { x: ScaleWidth - 8, y: y + 4, "text-anchor": "end", "aria-hidden": "true" }, part === 0 ? "0" : size(largest * part))];
    });
  }

  // The dates below the bars, as many as there is room for. The date of the newest set is always there.
  labels(pitch) {
    const step = Math.ceil(LabelWidth / pitch);
    const labels = [];
    let next = Infinity; // the middle of the label to the right
    for (let at = sets.length - 1; at >= 0; at -= step) {
      const middle = ScaleWidth + (at + .5) * pitch;
      const end = ScaleWidth + Math.max(pitch * sets.length, LabelWidth);
      const x = Math.max(ScaleWidth + LabelWidth / 2 - 8, Math.min(end - LabelWidth / 2 + 8, middle));
      if (next - x < LabelWidth) continue;
      next = x;
      labels.push(drawn("text", { x, y: ChartHeight + MarkHeight + 19, "text-anchor": "middle", "aria-hidden": "true" }, sets[at].date.split(" ")[0]));
    }
    return labels;
  }

  pressed(event) {
    const last = sets.length - 1;
    const targets = { ArrowRight: this.chosen + 1, ArrowDown: this.chosen + 1, ArrowLeft: this.chosen - 1, ArrowUp: this.chosen - 1, Home: 0, End: last };
    if (!(event.key in targets)) return;
    event.preventDefault();
    this.take(Math.max(0, Math.min(last, targets[event.key])));
    this.columns[this.chosen].focus();
  }

  take(set) {
    this.chosen = set;
    this.choose(set);
  }
}
