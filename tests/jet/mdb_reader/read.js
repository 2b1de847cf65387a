// Prints one table of a database file as JSON: [column types, rows]; times as ISO 8601 in UTC.
import { readFileSync } from "node:fs";
import MDBReader from "mdb-reader";

const [file, name] = process.argv.slice(2);
const table = new MDBReader(readFileSync(file)).getTable(name);
const types = table.getColumns().map((column) => `${column.name}:${column.type}`);
const rows = table.getData().map((row) => Object.values(row));
if (rows.length !== table.rowCount) throw new Error(`${rows.length} rows, ${table.rowCount} counted`);
console.log([types, ...rows].map((row) => JSON.stringify(row)).join("\n"));
