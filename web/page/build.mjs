// Builds the page into dist, or into the folder that is named. Equal sources give equal bytes.
import { build } from "esbuild";
import { copyFileSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const out = process.argv[2] ?? join(here, "dist");
mkdirSync(out, { recursive: true });
// What is bundled is passed on with its licence.
const licence = readFileSync(join(dirname(createRequire(import.meta.url).resolve("preact")), "../LICENSE"), "utf8");
const options = {
    absWorkingDir: here,
    outdir: out,
    bundle: true,
    minify: true,
    charset: "ascii",
    legalComments: "none",
    target: ["es2022"],
    jsx: "automatic",
    jsxImportSource: "preact",
};
await build({ ...options, entryPoints: { app: "src/main.tsx", style: "src/style.css" }, banner: { js: `/*! Preact\n${licence}*/` } });
const early = (await build({ ...options, entryPoints: { early: "src/early.ts" }, write: false })).outputFiles[0].text;
for (const file of ["index.html", "icon.svg"]) {
    copyFileSync(join(here, "src", file), join(out, file));
}
// Who has a session gets a page that asks at once for what it shows, and whose frame can be seen before the script that
// fills it has come.
const page = readFileSync(join(out, "index.html"), "utf8");
const frame = readFileSync(join(here, "src/frame.html"), "utf8").replace(/\n */g, "");
writeFileSync(
    join(out, "signed_in.html"),
    page
        .replace('<link rel="stylesheet"', () => `<script>${early.trim()}</script>\n<link rel="stylesheet"`)
        .replace('<div id="page">', () => `<div id="page">${frame}`),
);
