// Builds the page into dist, or into the folder that is named. Equal sources give equal bytes.
import { build } from "esbuild";
import { copyFileSync, mkdirSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const out = process.argv[2] ?? join(here, "dist");
mkdirSync(out, { recursive: true });
await build({
    absWorkingDir: here,
    entryPoints: { app: "src/main.tsx", style: "src/style.css" },
    outdir: out,
    // Where the build installs packages, beside the usual place.
    nodePaths: process.env.NODE_PATH ? [process.env.NODE_PATH] : [],
    bundle: true,
    minify: true,
    charset: "ascii",
    legalComments: "none",
    target: ["es2022"],
    jsx: "automatic",
    jsxImportSource: "preact",
});
for (const file of ["index.html", "icon.svg"]) {
    copyFileSync(join(here, "src", file), join(out, file));
}
