// What the page looks like, compared with pictures of half its size that are checked in. They are compared at half their
// size again, where the smoothing of letters does not count and whatever is moved, missing or of another colour does.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import { openPage, useServer } from "./support.mjs";

const folder = fileURLToPath(new URL("screens/", import.meta.url));
const record = process.env.QV_RECORD_SCREENS === "1";
/** How far a colour may be off, of 255, and how many of the places may. */
const kOff = 24;
const kShare = 0.002;
const kFont = "DejaVu Sans";

const people = Array.from({ length: 30 }, (_, i) => `clerk${i + 1},Clerk ${i + 1},Auditor\n`);
const shared = useServer(
    [
        "view create Company",
        "group create /Company/Sales",
        "group create /Company/Sales/North",
        "group create /Company/Legal",
        "user create amy --name 'Amy Pond' --title Lead --email amy@example.org --mobile '+44 7700 900001'",
        "user create rory --name 'Rory Williams' --locked",
        "member add /Company/Sales amy rory",
        "role create Editors",
        "role create Helpers",
        "right grant role:Editors mail size 10",
        "right grant role:Helpers mail size 4",
        "docroot create Company --path /srv/company",
        "folder create /Company/Plans",
        "folder create /Company/Plans/2026",
    ],
    {
        people: `login,name,title\n${people.join("")}`,
        lines: [{ noun: "notice", id: "1", creator: "amy", subject: "Fire drill", created: "2026-01-01 00:00:00", content: "At noon.\nBring coats." }],
    },
);

/** The share of places in which two pictures differ; 1 for other sizes. */
const compare = (page, one, other) =>
    page.evaluate(
        async ({ pictures, off }) => {
            const [a, b] = await Promise.all(
                pictures.map(async text => {
                    const picture = await createImageBitmap(new Blob([Uint8Array.from(atob(text), c => c.charCodeAt(0))], { type: "image/png" }));
                    const canvas = new OffscreenCanvas(Math.round(picture.width / 2), Math.round(picture.height / 2));
                    const context = canvas.getContext("2d");
                    context.imageSmoothingQuality = "high";
                    context.drawImage(picture, 0, 0, canvas.width, canvas.height);
                    return context.getImageData(0, 0, canvas.width, canvas.height);
                }),
            );
            if (a.width !== b.width || a.height !== b.height) {
                return 1;
            }
            let count = 0;
            for (let i = 0; i < a.data.length; i += 4) {
                count += [0, 1, 2].some(j => Math.abs(a.data[i + j] - b.data[i + j]) > off) ? 1 : 0;
            }
            return count / (a.data.length / 4);
        },
        { pictures: [one.toString("base64"), other.toString("base64")], off: kOff },
    );

const tree = page => page.getByRole("tree").getByText("Company");
const sheet = page => page.getByRole("heading", { name: "Amy Pond" });
const states = [
    { name: "directory", path: "/directory?user=31", ready: sheet },
    { name: "directory-dark", path: "/directory?user=31", ready: sheet, options: { colorScheme: "dark" } },
    { name: "directory-german", path: "/directory?user=31", ready: sheet, language: "de" },
    { name: "directory-narrow", path: "/directory", ready: tree, options: { width: 390, height: 700 } },
    { name: "directory-mirrored", path: "/directory?user=31", ready: sheet, isMirrored: true },
    {
        name: "selection",
        path: "/directory",
        ready: tree,
        async act(page) {
            await page.getByLabel("Select all").click();
            await page.getByText("selected", { exact: false }).first().waitFor();
        },
    },
    {
        name: "deletion",
        path: "/directory?q=amy",
        ready: page => page.getByRole("grid").getByText("Amy Pond"),
        async act(page) {
            await page.getByLabel("Select amy", { exact: true }).click();
            await page.getByRole("button", { name: "Delete…" }).last().click();
            await page.getByRole("dialog").waitFor();
        },
    },
    { name: "security", path: "/directory?user=31&tab=security", ready: page => page.getByText("No password is set") },
    { name: "documents", path: "/documents?at=folder:1", ready: page => page.getByRole("treeitem", { selected: true }) },
    { name: "board", path: "/board?notice=1", ready: page => page.getByText("Bring coats.") },
    { name: "matrix", path: "/rights", ready: page => page.getByText("size", { exact: true }) },
    { name: "sign-in", path: "/", ready: page => page.getByLabel("Login name"), options: { signedIn: false } },
];

test("the font of the pictures is there", () => {
    assert.match(execFileSync("fc-list", [kFont, "family"], { encoding: "utf8" }), new RegExp(kFont), "install fonts-dejavu-core");
});

for (const { name, path, ready, act, language, isMirrored, options = {} } of states) {
    test(`${name} looks as it did`, async () => {
        // The page's rules forbid styles from elsewhere; here they fix what depends on the machine.
        const { page, finish } = await openPage(shared, { width: 1000, height: 640, bypassCSP: true, deviceScaleFactor: 0.5, reducedMotion: "reduce", ...options });
        if (language) {
            await page.evaluate(code => localStorage.setItem("language", code), language);
        }
        if (options.signedIn !== false) {
            await page.goto(shared.server.url + path);
            await page.locator(".offer").getByRole("button").last().click();
        }
        await ready(page).first().waitFor();
        await page.addStyleTag({
            content: `* { font-family: "${kFont}" !important; animation: none !important; transition: none !important; caret-color: transparent !important; }
                .engine { visibility: hidden; } ::-webkit-scrollbar { display: none; }`,
        });
        if (isMirrored) {
            await page.evaluate(() => (document.documentElement.dir = "rtl"));
        }
        await act?.(page);
        await page.mouse.move(0, 0);
        await page.evaluate(() => document.activeElement?.blur());
        await page.waitForLoadState("load");
        const file = join(folder, `${name}.png`);
        if (record) {
            // Lists are read while the page rests.
            await page.waitForTimeout(1000);
            mkdirSync(folder, { recursive: true });
            writeFileSync(file, await page.screenshot());
        } else {
            assert.ok(existsSync(file), `${name}.png is missing; record it with QV_RECORD_SCREENS=1 ctest -R page.screens`);
            const wanted = readFileSync(file);
            let share = 1;
            let present;
            // What is still on its way comes within some tries.
            for (let i = 0; share > kShare && i < 40; ++i) {
                await page.waitForTimeout(i === 0 ? 0 : 250);
                present = await page.screenshot();
                share = await compare(page, wanted, present);
            }
            const seen = join(tmpdir(), `screen-${name}.png`);
            if (share > kShare) {
                writeFileSync(seen, present);
            }
            assert.ok(
                share <= kShare,
                `${name}.png differs from ${seen} in ${(share * 100).toFixed(2)} % of its places; look at both, and if the page is right, record all anew with QV_RECORD_SCREENS=1 ctest -R page.screens`,
            );
        }
        await finish();
    });
}
