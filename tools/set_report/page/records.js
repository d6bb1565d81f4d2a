// The records of databases, and the keys and values of the registry, as tables.

const field = (name, show = text => text) => record => record.fields.has(name) ? show(record.fields.get(name)) : "";
const moment = text => text.replace("T", " ").replace(/:00$/, "");
const day = text => moment(text).replace(/ 00:00$/, "");

function duration(minutes) {
  const number = Number(minutes);
  if (!(number > 0)) return "";
  return number % 1440 === 0 ? counted(number / 1440, "day") : number % 60 === 0 ? counted(number / 60, "hour") : `${number} min`;
}

const repetition = days => ({ 0: "", 1: "every day", 7: "every week", 365: "every year" })[days] ?? `every ${days} days`;
const priority = number => ({ 1: "high", 2: "normal", 3: "low" })[number] ?? number;
const column = (title, text, more = {}) => ({ title, text, sort: record => text(record).toLowerCase(), ...more });
const text = (title, name, more = {}) => column(title, field(name), { width: "w-text", ...more });

// The kinds of records, each with the types of its databases and its columns.
const RecordGroups = [
  { id: "contacts", title: "Contacts", thing: "contact", keeps: type => type === Contacts, columns: [
    column("Name", record => record.title), text("Company", "Company", { wide: true }), text("Telephone", "HomeTelephone"),
    text("Mail", "Mail", { wide: true }), text("Town", "Town", { wide: true, width: "w-short" })] },
  { id: "appointments", title: "Appointments", thing: "appointment", keeps: type => type === Appointments, columns: [
    column("Start", field("Start", moment), { width: "w-text" }), column("Subject", record => record.title), text("Place", "Place", { wide: true }),
    column("Length", field("Minutes", duration), { width: "w-short", wide: true, sort: record => Number(record.fields.get("Minutes") ?? 0) }),
    column("Repeats", field("RepetitionDays", repetition), { width: "w-number", wide: true })] },
  { id: "tasks", title: "Tasks", thing: "task", keeps: type => type === Tasks, columns: [
    column("Subject", record => record.title), column("Due", field("Due", day), { width: "w-text" }),
    column("Priority", field("Priority", priority), { width: "w-short", wide: true, sort: field("Priority") }),
    column("State", field("Done", done => done === "1" ? "done" : "open"), { width: "w-short" })] },
  { id: "other-records", title: "Other records", thing: "record", keeps: type => ![Contacts, Appointments, Tasks].includes(type), columns: [
    text("Database", "", { text: record => record.database, sort: record => record.database.toLowerCase() }),
    column("Fields", record => [...record.fields].map(([name, value]) => `${name}: ${value}`).join("; "))] },
];

const Shown = { Start: moment, Due: day, Birthday: day, Minutes: duration, RepetitionDays: repetition, Priority: priority, Done: done => done === "1" ? "yes" : "no" };

function showRecord(record) {
  const pairs = [...record.fields].map(([name, value]) => [spaced(name), Shown[name]?.(value) ?? value]);
  showDetails(record.title, fieldList([["Database", record.database], ...pairs, ["In the sets", spans(record.row, RecordRuns)]]));
}

const searchOf = record => record.low ??= [record.database, ...record.fields.values()].join("\n").toLowerCase();

const ValueColumns = [
  { title: "Key", text: row => pathText(row[0]), sort: row => row[0].toLowerCase() },
  { title: "Value", text: row => row[1] === null ? "" : valueName(row), sort: row => (row[1] ?? "").toLowerCase(), width: "w-text" },
  { title: "Content", text: row => row[1] === null ? "" : valueIn(row), width: "w-text", wide: true },
];

const valueIn = row => row[runAt(row, ValueRuns, page.chosen) + 2];

function showValue(row) {
  const states = [];
  for (let at = ValueRuns.start; at < row.length; at += ValueRuns.width) states.push([spanOf(row[at], row[at + 1]), row[1] === null ? "there" : row[at + 2]]);
  showDetails(row[1] === null ? row[0] : valueName(row), fieldList([["Key", row[0]], ...states]));
}

const spanOf = (first, last) => first === last ? setName(first) : `${setName(first)} to ${setName(last)}`;

// The ranges of sets that have the row, the oldest first, as text.
function spans(row, { start, width }) {
  const texts = [];
  for (let at = row.length - width; at >= start; at -= width) texts.push(spanOf(row[at], row[at + 1]));
  return texts.join("\n");
}

// Makes the tables, each in a section with a heading, and leaves out those for which the report has no rows. Returns a function that
// shows the rows of a set.
function recordSections(root) {
  const section = (id, title) => {
    const home = element("div", { id: `${id}-table` });
    root.append(element("section", { id, "aria-labelledby": `${id}-title` }, element("h3", { id: `${id}-title` }, title), home));
    return home;
  };
  const groups = RecordGroups.filter(group => data.records.some(row => group.keeps(data.databases[row[0]][1]))).map(group => ({ ...group,
    table: new RowTable(section(group.id, group.title), group.columns, { name: group.title, thing: group.thing, search: searchOf, open: showRecord, empty: "The page has none of this set.", sorted: 0 }) }));
  const values = data.values.length === 0 ? null : new RowTable(section("registry", "Registry"), ValueColumns, { name: "Registry", thing: "line",
    search: row => `${row[0]} ${row[1] ?? ""} ${valueIn(row)}`.toLowerCase(), open: showValue, empty: "The page has none of this set." });
  return set => {
    const records = recordsOf(set);
    for (const { table, keeps } of groups) table.setRows(records.filter(record => keeps(record.type)));
    values?.setRows(valuesOf(set));
  };
}
