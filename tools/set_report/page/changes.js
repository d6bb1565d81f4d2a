// The changes between two sets: of items, of the records of databases, and of the keys and values of the registry.

const Added = "Added", Removed = "Removed", Changed = "Changed", Moved = "Moved", Damaged = "Damaged";

const change = (what, kind, name, before, after, pairs) =>
  ({ what, kind, name, before, after, pairs, low: `${what} ${kind} ${name} ${before} ${after}`.toLowerCase() });

function changesBetween(older, newer) {
  return [...itemChanges(older, newer), ...recordChanges(older, newer), ...valueChanges(older, newer)];
}

// Calls found(row, offset of its run in the older set, offset of its run in the newer set, index of the row) for each row that at
// least one of the sets has. An offset is -1 if that set doesn't have the row.
function inEither(rows, runs, older, newer, found) {
  rows.forEach((row, number) => {
    const before = runAt(row, runs, older);
    const after = runAt(row, runs, newer);
    if (before >= 0 || after >= 0) found(row, before, after, number);
  });
}

function pushTo(map, key, value) {
  if (!map.has(key)) map.set(key, []);
  map.get(key).push(value);
}

function itemChanges(older, newer) {
  if (!hasItems(Math.min(older, newer))) return [];
  const changes = [], gone = new Map(), come = [];
  inEither(data.items, ItemRuns, older, newer, (row, at, to, number) => {
    const before = at >= 0 ? itemAt(number, at) : null;
    const after = to >= 0 ? itemAt(number, to) : null;
    if (!before) come.push(after);
    else if (!after) pushTo(gone, before.content, before);
    else if (!before.content || !after.content) (before.fault !== after.fault || !before.content !== !after.content) && changes.push(itemChange(Damaged, before, after));
    else if (before.content !== after.content) changes.push(itemChange(Changed, before, after));
  });
  for (const after of come) {
    const before = after.bytes > 0 ? gone.get(after.content)?.pop() : undefined; // the same content under another name
    changes.push(itemChange(before ? Moved : Added, before, after));
  }
  for (const before of [...gone.values()].flat()) changes.push(itemChange(Removed, before, null));
  return changes;
}

function itemChange(what, before, after) {
  const stateOf = item => !item ? "" : item.fault ? `damaged: ${item.fault}` : size(item.bytes);
  const name = what === Moved ? `${before.name} → ${after.name}` : (after ?? before).name;
  return change(what, kindName((after ?? before).kind), name, stateOf(before), stateOf(after));
}

// The names of the items of a kind that couldn't be read to their end in one of the sets.
function unreadNames(kind, ...among) {
  const isUnread = row => among.some(set => { const at = runAt(row, ItemRuns, set); return at >= 0 && !row[at + 2]; });
  return new Set(data.items.filter(row => row[0] === kind && isUnread(row)).map(row => row[1]));
}

// The changes of records that only one of the sets has. If a record of each set describes the same contact, appointment or task,
// the two records are shown as one record that has changed.
function recordChanges(older, newer) {
  if (Math.min(older, newer) < data.recordsFrom) return [];
  const gone = new Map(), come = [], unread = unreadNames(2, older, newer);
  inEither(data.records, RecordRuns, older, newer, (row, before, after) => {
    if (before >= 0 && after >= 0 || unread.has(data.databases[row[0]][0])) return;
    const record = recordFrom(row);
    if (before < 0) come.push(record);
    else pushTo(gone, identityOf(record), record);
  });
  const changes = come.map(record => {
    const before = gone.get(identityOf(record))?.pop();
    return recordChange(before ? Changed : Added, before, record);
  });
  return [...changes, ...[...gone.values()].flat().map(record => recordChange(Removed, record, null))];
}

function identityOf(record) {
  const isKnown = [Contacts, Appointments, Tasks].includes(record.type) && !record.title.includes(" without a ");
  return JSON.stringify([record.database, record.type, isKnown ? record.title : record.row, record.type === Appointments ? record.fields.get("Start") : ""]);
}

function recordChange(what, before, after) {
  const names = [...new Set([...before?.fields.keys() ?? [], ...after?.fields.keys() ?? []])];
  const pairs = names.map(name => [name, before?.fields.get(name), after?.fields.get(name)]).filter(([, left, right]) => left !== right);
  const textOf = side => what !== Changed ? "" : pairs.map(pair => `${spaced(pair[0])}: ${pair[side] ?? "none"}`).join("; ");
  const record = after ?? before;
  return change(what, "Record", `${record.database}: ${record.title}`, textOf(1), textOf(2), pairs);
}

function valueChanges(older, newer) {
  if (Math.min(older, newer) < data.valuesFrom || unreadNames(3, older, newer).size > 0) return [];
  const changes = [];
  inEither(data.values, ValueRuns, older, newer, (row, before, after) => {
    const isKey = row[1] === null;
    const textOf = at => at < 0 || isKey ? "" : row[at + 2];
    if (before >= 0 && after >= 0 && textOf(before) === textOf(after)) return;
    const what = before < 0 ? Added : after < 0 ? Removed : Changed;
    changes.push(change(what, isKey ? "Registry key" : "Registry value", row[0] + (isKey ? "" : `, ${valueName(row)}`), textOf(before), textOf(after)));
  });
  return changes;
}

const valueName = row => row[1] || "(default)";

// "HomeTelephone" as "Home telephone".
const spaced = name => /^[A-Z][a-z]/.test(name) ? name[0] + name.slice(1).replace(/[A-Z]/g, letter => ` ${letter.toLowerCase()}`) : name;

function showChange({ what, kind, name, before, after, pairs }) {
  if (!pairs) return showDetails(name, fieldList([["Change", what], ["Kind", kind], ["Before", before], ["After", after]]));
  const columns = [{ title: "Field" }, { title: "Before" }, { title: "After" }];
  const rows = pairs.map(([field, left, right]) => [spaced(field), left ?? "none", right ?? "none"]);
  showDetails(name, fieldList([["Change", what]]), element("div", { class: "frame free", tabindex: "0" }, simpleTable("Fields that differ", columns, rows)));
}
