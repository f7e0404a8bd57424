// Builds the page into dist, or into the folder that is named. Equal sources give equal bytes.
import { build } from "esbuild";
import { copyFileSync, mkdirSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const out = process.argv[2] ?? join(here, "dist");
mkdirSync(out, { recursive: true });
// What is bundled is passed on with its licence.
const licence = readFileSync(join(dirname(createRequire(import.meta.url).resolve("preact")), "../LICENSE"), "utf8");
await build({
    absWorkingDir: here,
    entryPoints: { app: "src/main.tsx", style: "src/style.css" },
    outdir: out,
    bundle: true,
    minify: true,
    charset: "ascii",
    legalComments: "none",
    banner: { js: `/*! Preact\n${licence}*/` },
    target: ["es2022"],
    jsx: "automatic",
    jsxImportSource: "preact",
});
for (const file of ["index.html", "icon.svg"]) {
    copyFileSync(join(here, "src", file), join(out, file));
}
