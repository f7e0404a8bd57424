// The page that is checked in is what its sources give: built.mjs PAGE MODULES WORK
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync, readdirSync, rmSync } from "node:fs";
import { join } from "node:path";

const [page, modules, work] = process.argv.slice(2);
const out = join(work, "dist");
rmSync(out, { recursive: true, force: true });
execFileSync("cp", ["-r", join(page, "src"), join(page, "build.mjs"), join(page, "tsconfig.json"), modules]);
execFileSync(join(modules, "node_modules/.bin/tsc"), ["--noEmit"], { cwd: modules, stdio: "inherit" });
execFileSync(process.execPath, ["build.mjs", out], { cwd: modules, stdio: "inherit" });
const names = readdirSync(out).sort();
assert.deepEqual(readdirSync(join(page, "dist")).sort(), names);
for (const name of names) {
    const isSame = readFileSync(join(out, name)).equals(readFileSync(join(page, "dist", name)));
    assert.ok(isSame, `${name} is not what its sources give; run node build.mjs in web/page`);
}
assert.doesNotMatch(readFileSync(join(page, "package-lock.json"), "utf8"), /https?:\/\/registry/);
