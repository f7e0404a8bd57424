// How the page begins, and what it shows where there is little to show.
import assert from "node:assert/strict";
import { test } from "node:test";
import { openPage, settled, useServer } from "./support.mjs";

const shared = useServer(["user create amy --name 'Amy Pond'", "user create bill --name 'Bill Potts'"]);

test("who is signed in sees the frame before its script has come, in the colours that were chosen", async () => {
    const { page, finish } = await openPage(shared);
    await page.locator("details.user > summary").click();
    await page.getByRole("button", { name: "Dark" }).click();
    let go;
    const isAsked = new Promise(resolve => page.route("**/app.js", route => resolve((go = () => route.continue()))));
    await page.goto(`${shared.server.url}/directory`, { waitUntil: "commit" });
    await isAsked;
    await page.getByRole("banner").getByText("Quorvel").waitFor();
    await page.waitForFunction(() => performance.getEntriesByName("first-contentful-paint").length > 0);
    assert.equal(await page.evaluate(() => getComputedStyle(document.body).colorScheme), "dark");
    go();
    await page.getByRole("row").filter({ hasText: "amy" }).waitFor();
    // It is the same frame, and nothing of it is there twice.
    assert.equal(await page.locator(".frame, .top, .product, .areas, main").count(), 5);
    await finish();
});

test("panels that fill a page end with the window, whatever stands above them", async () => {
    for (const width of [1280, 390]) {
        const { page, finish } = await openPage(shared, { path: "/documents", width, height: 800 });
        for (const area of ["documents", "board"]) {
            await page.goto(`${shared.server.url}/${area}`);
            await page.getByRole("button", { name: "Not now" }).waitFor();
            await page.locator(".split").waitFor();
            await settled(page);
            const [below, free] = await page.locator(".page").evaluate(one => [
                one.scrollHeight - one.clientHeight,
                one.getBoundingClientRect().bottom - one.querySelector(".split").getBoundingClientRect().bottom,
            ]);
            assert.deepEqual([below, free], [0, 16], `${area}, ${width}`);
        }
        await finish();
    }
});

test("a list without rows says so under its head", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=zzzz" });
    const { y } = await page.getByText("Nobody matches this search.").boundingBox();
    const head = await page.locator("#people .row.head").boundingBox();
    assert.ok(y >= head.y + head.height && y < head.y + head.height + 40, `${y}`);
    await page.getByRole("row").filter({ hasText: "amy" }).waitFor({ state: "detached" });
    await finish();
});

test("a sentence of the server names a command and its options as the page does", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=2&tab=rights" });
    await page.getByText("“Roles: Default” makes that role").waitFor();
    await finish();
});

test("a menu that is asked for before it is known what may be done has all of it", async () => {
    const { page, finish } = await openPage(shared);
    let answer;
    const isAsked = new Promise(resolve => page.route("**/api/v1/commands", route => resolve((answer = () => route.continue()))));
    await page.goto(`${shared.server.url}/directory`);
    await isAsked;
    await page.getByRole("row").filter({ has: page.getByLabel("Select amy", { exact: true }) }).click({ button: "right" });
    await page.getByText("1 selected").waitFor();
    answer();
    await page.getByRole("menu").getByRole("menuitem", { name: "Lock", exact: true }).waitFor();
    await finish();
});
