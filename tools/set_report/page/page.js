// The page: an overview of all sets, and the contents of the chosen set.

const ItemColumns = [
  { title: "Name", text: item => pathText(item.name), sort: item => item.low, bad: item => item.fault },
  { title: "Kind", text: item => kindName(item.kind), width: "w-short", wide: true },
  { title: "Size", text: item => item.bytes < 0 ? "" : count(item.bytes), sort: item => item.bytes, number: true, width: "w-number" },
  { title: "Packed", text: item => count(item.packed), sort: item => item.packed, number: true, width: "w-number", wide: true },
  { title: "Unchanged since", text: item => sets[item.since].date, sort: item => item.since, width: "w-text", wide: true },
  { title: "State", text: item => item.fault ? "damaged" : item.bytes < 0 ? "not read" : "good", width: "w-short", wide: true, bad: item => item.fault },
];

const page = {
  chosen: sets.length - 1,
  changesTable: new RowTable(byId("changes-table"), [
    { title: "Change", text: row => row.what, width: "w-short", bad: row => row.what === Damaged },
    { title: "Kind", text: row => row.kind, width: "w-number", wide: true },
    { title: "Name", text: row => pathText(row.name), sort: row => row.name.toLowerCase() },
    { title: "Before", text: row => row.before, width: "w-text", wide: true },
    { title: "After", text: row => row.after, width: "w-text", wide: true },
  ], { name: "Changes", thing: "change", search: row => row.low, open: showChange, empty: "Nothing.",
    choices: [["All changes", null], ...[Added, Removed, Changed, Moved, Damaged].map(what => [what, row => row.what === what])] }),
  itemsTable: new RowTable(byId("items-table"), ItemColumns, { name: "Items", thing: "item", search: item => item.low, open: showItem, empty: "No item.",
    choices: [["All items", null], ["Files", item => item.kind === 1], ["Databases", item => item.kind === 2], ["Registry", item => item.kind === 3], ["Damaged", item => item.fault]] }),
  timeline: new Timeline(byId("timeline"), choose),
  treemap: new Treemap(byId("treemap"), byId("largest"), byId("trail"), showItem),
  showRecords: recordSections(byId("records")),
};

// Shows all details of an item, and its states in all sets.
function showItem(item) {
  const row = data.items[item.number];
  const states = [];
  for (let at = row.length - ItemRuns.width; at >= ItemRuns.start; at -= ItemRuns.width) {
    const { bytes, packed, fault } = itemAt(item.number, at);
    states.push([spanOf(row[at], row[at + 1]), size(bytes), size(packed), fault ? `damaged: ${fault}` : bytes < 0 ? "not read" : "good"]);
  }
  const columns = [{ title: "Sets" }, { title: "Size", number: true }, { title: "Packed", number: true }, { title: "State" }];
  showDetails(item.name || "(no name)", fieldList([["Kind", kindName(item.kind)], ["Size", item.bytes < 0 ? "unknown" : counted(item.bytes, "byte")],
    ["Packed", counted(item.packed, "byte")], ["Damage", item.fault]]), element("div", { class: "frame free", tabindex: "0" }, simpleTable("In the sets", columns, states)));
}

function showOverview() {
  const total = name => sets.reduce((sum, set) => sum + set[name], 0);
  const newest = sets.at(-1);
  const sealed = sets.filter(set => set.sealed).length;
  byId("summary").textContent = sets.length === 1 ? `One set, of ${newest.date}` : `${count(sets.length)} sets, from ${sets[0].date} to ${newest.date}`;
  byId("figures").replaceChildren(...[["Sets", count(sets.length)], ["Items in the newest set", count(newest.items)], ["Size of the newest set", size(newest.bytes)],
    ["Packed, all sets", size(total("packed"))], ["Sealed sets", `${count(sealed)} of ${count(sets.length)}`]]
    .map(([term, text]) => element("div", {}, element("dt", {}, term), element("dd", {}, text))));
  showVerdict(sealed);
  const shortened = [["itemsFrom", "items"], ["recordsFrom", "records"], ["valuesFrom", "registries"]].filter(([from]) => data[from] > 0)
    .map(([from, what]) => `The ${what} of the oldest ${counted(data[from], "set")} are not all on this page, because it would become too large.`);
  listed(byId("notes"), [...data.faults, ...shortened]);
  byId("footer").textContent = `Written by Quillbox ${data.version} on ${data.written}. This page needs no network.`;
}

function showVerdict(sealed) {
  const damaged = sets.filter(isDamaged).length;
  const items = sets.reduce((sum, set) => sum + set.damaged, 0);
  const unsealed = sealed === sets.length ? "Each set is sealed, so every changed bit would have been found."
    : `${sealed === 0 ? "No set is sealed" : `${counted(sealed, "set")} of ${count(sets.length)} ${sealed === 1 ? "is" : "are"} sealed`}. In a set that isn't sealed, a changed bit inside an item can stay unnoticed.`;
  const verdict = byId("verdict");
  verdict.hidden = false;
  verdict.classList.toggle("bad", damaged > 0);
  verdict.replaceChildren(element("p", {}, element("strong", {}, damaged === 0 ? "Nothing damaged found." : `${counted(damaged, "set")} of ${count(sets.length)} ${damaged === 1 ? "is" : "are"} damaged.`), " ",
    damaged === 0 ? unsealed : items === 0 ? "The damage isn't in single items, so whether the items are whole isn't known." : `${counted(items, "item")} in ${damaged === 1 ? "it" : "them"} ${items === 1 ? "has" : "have"} damage.`));
}

function showDamage() {
  const rows = sets.flatMap((set, at) => set.faults.map(reason => ({ first: at, last: at, name: "(whole set)", reason })));
  data.items.forEach((row, number) => {
    for (let at = ItemRuns.start; at < row.length; at += ItemRuns.width)
      if (row[at + 5]) rows.push({ first: row[at], last: row[at + 1], name: row[1], reason: row[at + 5], item: itemAt(number, at) });
  });
  byId("damage").hidden = !sets.some(isDamaged);
  if (!sets.some(isDamaged)) return;
  const table = new RowTable(byId("damage-table"), [
    { title: "Sets", text: row => spanOf(row.first, row.last), sort: row => row.last, width: "w-dates", wide: true }, { title: "Item", text: row => pathText(row.name), sort: row => row.name }, { title: "Damage", text: row => row.reason },
  ], { name: "Damage", thing: "fault", search: row => `${row.name} ${row.reason}`.toLowerCase(),
    open: row => row.item ? showItem(row.item) : showDetails(setName(row.first), fieldList([["File", sets[row.first].path], ["Damage", row.reason]])) });
  table.setRows(rows.sort((left, right) => right.last - left.last));
}

function showSetsTable() {
  const counts = countChanges();
  const columns = [{ title: "Date" }, { title: "Items", number: true }, { title: "Size", number: true, wide: true }, { title: "Packed", number: true },
    ...[Added, Changed, Removed].map(title => ({ title, number: true, wide: true })), { title: "State" }];
  const rows = sets.map((set, at) => {
    const known = at > data.itemsFrom ? Object.values(counts[at]).map(count) : ["", "", ""];
    return [button(setName(at), () => choose(at), { class: "link" }), count(set.items), size(set.bytes), size(set.packed), ...known,
      isDamaged(set) ? element("span", { class: "bad-text" }, "damaged") : set.sealed ? "good, sealed" : "good"];
  });
  byId("sets-table").replaceChildren(element("div", { class: "frame", tabindex: "0", role: "group", "aria-label": "Table of the sets" }, simpleTable("The sets, the newest first", columns, rows.reverse())));
}

function showFacts() {
  const set = sets[page.chosen];
  byId("set-title").textContent = `Set of ${setName(page.chosen)}`;
  descriptions(byId("facts"), [["Comment", set.comment.trim()], ["File", set.path], ["Date", set.doubt ? `${set.date} (${set.doubt})` : undefined],
    ["Items", count(set.items)], ["Size", `${size(set.bytes)}, packed ${size(set.packed)}`],
    ["Verified", (!isDamaged(set) ? "nothing damaged found" : set.damaged > 0 ? counted(set.damaged, "damaged item") : "damaged as a whole") + (set.sealed ? ", sealed" : ", not sealed")]]);
  const more = set.warningCount - set.warnings.length;
  listed(byId("set-notes"), [...set.faults, ...set.warnings, ...more > 0 ? [`${counted(more, "further warning")}`] : []]);
}

function showBases() {
  const bases = sets.map((set, at) => at).filter(at => at !== page.chosen);
  byId("changes").hidden = bases.length === 0;
  byId("base").replaceChildren(...bases.reverse().map(at => element("option", { value: at }, setName(at))));
  byId("base").value = page.chosen > 0 ? page.chosen - 1 : page.chosen + 1;
  if (bases.length > 0) showChanges();
}

function showChanges() {
  const base = Number(byId("base").value);
  const changes = changesBetween(base, page.chosen);
  const items = what => changes.filter(row => row.what === what && Object.values(Kinds).includes(row.kind)).length;
  byId("changes-summary").textContent = !hasItems(Math.min(base, page.chosen)) ? "The page doesn't have all items of these sets, so they can't be compared here."
    : `Items: ${[Added, Removed, Changed, Moved].map(what => `${count(items(what))} ${what.toLowerCase()}`).join(", ")}. Records and values of the registry: ${count(changes.length - [Added, Removed, Changed, Moved, Damaged].reduce((sum, what) => sum + items(what), 0))}.`;
  page.changesTable.setRows(changes);
}

function choose(set) {
  page.chosen = set;
  byId("chosen").value = set;
  byId("older").disabled = set === 0;
  byId("newer").disabled = set === sets.length - 1;
  page.timeline.select(set);
  showFacts();
  const items = itemsOf(set);
  page.itemsTable.setRows(items);
  showBases();
  page.showRecords(set);
  page.treemap.setItems(items);
}

function begin() {
  showOverview();
  showDamage();
  showSetsTable();
  byId("chosen").replaceChildren(...sets.map((set, at) => element("option", { value: at }, setName(at))).reverse());
  byId("chosen").addEventListener("change", () => choose(Number(byId("chosen").value)));
  byId("older").addEventListener("click", () => choose(page.chosen - 1));
  byId("newer").addEventListener("click", () => choose(page.chosen + 1));
  byId("base").addEventListener("change", showChanges);
  byId("details-close").addEventListener("click", () => byId("details").close());
  byId("parts").replaceChildren(...[...document.querySelectorAll("main h3")].filter(title => sets.length > 1 || title.id !== "changes-title")
    .map(title => element("li", {}, element("a", { href: `#${title.closest("section").id}` }, title.textContent))));
  choose(sets.length - 1);
}

begin();
