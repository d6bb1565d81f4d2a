// What takes the space in a set: a picture of rectangles. A table shows the largest of them for the keyboard and for screen readers.

const DeepestFolder = 64; // levels. Below them the rest of a path counts as the name of the file.
const MostRectangles = 150;
const MostInside = 60;
const MostLevels = 4;
const LargestRows = 12;
const HeadHeight = 20; // of a folder whose contents are drawn inside it
const LetterWidth = 6.6;

// A folder. It contains folders and leaves, and each leaf has an item.
class SizeFolder {
  constructor(name, parent = null) {
    Object.assign(this, { name, parent, bytes: 0, items: 0, folders: new Map(), leaves: [] });
  }

  folder(name) {
    let found = this.folders.get(name);
    if (!found) this.folders.set(name, found = new SizeFolder(name, this));
    return found;
  }

  addLeaf(name, item) {
    const bytes = item.bytes < 0 ? item.packed : item.bytes;
    this.leaves.push({ name, item, bytes });
    for (let folder = this; folder; folder = folder.parent) {
      folder.bytes += bytes;
      folder.items++;
    }
  }

  // The largest first.
  children() {
    this.sorted ??= [...this.folders.values(), ...this.leaves].sort((left, right) => right.bytes - left.bytes);
    return this.sorted;
  }
}

function sizeTree(items) {
  const root = new SizeFolder("All items");
  for (const item of items) {
    const parts = item.kind === 1 ? item.name.split("\\").filter(Boolean) : [`${kindName(item.kind)} items`, item.name];
    const depth = Math.max(0, Math.min(parts.length - 1, DeepestFolder));
    let folder = root;
    for (let at = 0; at < depth; at++) folder = folder.folder(parts[at]);
    folder.addLeaf(depth === parts.length - 1 ? parts[depth] : parts.slice(depth).join("\\"), item);
  }
  return root;
}

// Lays out the nodes in a rectangle, row by row, so that the area of each node is as close to a square as possible. The nodes must
// be sorted, the largest first. Returns [node, area] for each node that is large enough to be seen.
function squares(nodes, area) {
  let { x, y, width, height } = area;
  let left = nodes.reduce((sum, node) => sum + node.bytes, 0);
  const placed = [];
  for (let from = 0; from < nodes.length && left > 0 && width > 2 && height > 2;) {
    const short = Math.min(width, height);
    const scale = width * height / left;
    const { to, sum } = bestRow(nodes, from, short, scale);
    const thick = sum * scale / short;
    let along = 0;
    for (; from < to; from++) {
      const long = nodes[from].bytes * scale / thick;
      placed.push([nodes[from], width >= height ? { x, y: y + along, width: thick, height: long } : { x: x + along, y, width: long, height: thick }]);
      along += long;
    }
    if (width >= height) [x, width] = [x + thick, width - thick];
    else [y, height] = [y + thick, height - thick];
    left -= sum;
  }
  return placed.filter(([, { width: wide, height: high }]) => wide > 1.5 && high > 1.5);
}

// Selects the nodes of one row along the short side. It adds the next node as long as this doesn't make the worst proportions worse.
function bestRow(nodes, from, short, scale) {
  const worst = (sum, smallest, largest) => {
    const side = sum * scale / short;
    return Math.max(largest * scale / side / side, side * side / (smallest * scale));
  };
  let sum = nodes[from].bytes;
  let to = from + 1;
  for (; to < nodes.length && nodes[to].bytes > 0; to++) {
    const next = sum + nodes[to].bytes;
    if (worst(next, nodes[to].bytes, nodes[from].bytes) > worst(sum, nodes[to - 1].bytes, nodes[from].bytes)) break;
    sum = next;
  }
  return { to, sum };
}

class Treemap {
  constructor(picture, table, trail, openItem) {
    Object.assign(this, { picture, table, trail, openItem, node: null });
    new ResizeObserver(() => this.node && this.draw()).observe(picture);
  }

  // The tree of many items takes a while to compute, so the page shows everything else first.
  setItems(items) {
    this.items = items;
    requestAnimationFrame(() => setTimeout(() => items === this.items && this.show(sizeTree(items))));
  }

  show(node) {
    this.node = node;
    this.showTrail();
    this.showLargest();
    this.draw();
  }

  open(node) {
    if (node.item) this.openItem(node.item);
    else this.show(node);
  }

  showTrail() {
    const nodes = [];
    for (let node = this.node; node; node = node.parent) nodes.unshift(node);
    this.trail.replaceChildren(...nodes.map(node => element("li", {}, node === this.node
      ? element("span", { "aria-current": "true" }, `${shortened(node.name)}, ${size(node.bytes)}`)
      : button(shortened(node.name), () => { this.show(node); this.trail.querySelector("[aria-current]").scrollIntoView({ block: "nearest" }); }, { class: "link" }))));
  }

  showLargest() {
    const children = this.node.children();
    if (children.length === 0) return this.table.replaceChildren(element("p", { class: "empty" }, "No item."));
    const rows = children.slice(0, LargestRows).map(child => [
      button(shortened(child.name) + (child.item ? "" : "\\"), () => this.open(child), { class: "link" }), size(child.bytes), this.share(child.bytes)]);
    const rest = children.slice(LargestRows);
    const bytes = rest.reduce((sum, child) => sum + child.bytes, 0);
    if (rest.length > 0) rows.push([`${count(rest.length)} more`, size(bytes), this.share(bytes)]);
    const columns = [{ title: "Largest" }, { title: "Size", number: true }, { title: "Share", number: true }];
    this.table.replaceChildren(element("div", { class: "frame free" }, simpleTable(`The largest in ${shortened(this.node.name)}`, columns, rows)));
  }

  share(bytes) {
    const percent = this.node.bytes === 0 ? 0 : bytes / this.node.bytes * 100;
    return percent > 0 && percent < .1 ? "< 0.1 %" : `${percent.toFixed(percent >= 10 ? 0 : 1)} %`;
  }

  draw() {
    this.picture.hidden = this.node.bytes === 0;
    const width = this.picture.clientWidth;
    const height = width < 500 ? 260 : 420;
    const picture = drawn("svg", { width, height, role: "img", "aria-label": `Rectangles as large as the ${counted(this.node.items, "item")} in ${shortened(this.node.name)}. The table of the largest has the same.` });
    squares(this.node.children().slice(0, MostRectangles), { x: 0, y: 0, width, height })
      .forEach(([node, area], at) => picture.append(this.rectangle(node, area, at % 6, 1)));
    this.picture.replaceChildren(picture);
  }

  // If a folder is large enough, its contents are drawn inside it.
  rectangle(node, area, tint, level) {
    const group = drawn("g", { class: classes("opens", node.item?.fault && "damaged"), onclick: event => { event.stopPropagation(); this.open(node); } },
      drawn("title", {}, `${shortened(node.name)}, ${size(node.bytes)}, ${this.share(node.bytes)}${node.item?.fault ? ", damaged" : ""}`),
      drawn("rect", { class: `tint${tint}`, x: area.x, y: area.y, width: area.width, height: area.height }));
    const letters = Math.floor((area.width - 10) / LetterWidth);
    if (letters > 3 && area.height > 17)
      group.append(drawn("text", { x: area.x + 5, y: area.y + 14 }, node.name.length > letters ? `${node.name.slice(0, letters - 1)}…` : node.name));
    if (level < MostLevels && !node.item && area.width > 70 && area.height > 50) {
      const inside = { x: area.x + 3, y: area.y + HeadHeight, width: area.width - 6, height: area.height - HeadHeight - 3 };
      for (const [child, place] of squares(node.children().slice(0, MostInside), inside)) group.append(this.rectangle(child, place, tint, level + 1));
    }
    return group;
  }
}
