import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, settled, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "group create /Company/Sales/North",
    "user create amy --name 'Amy Pond'",
    "user create bob --name 'Bob Stone'",
    "member add /Company/Sales/North amy bob",
    "role default --create",
    "role create Editors",
    "role add Editors amy",
    "right grant role:Editors mail send 1",
]);

test("a link opens the place, the search and the user that it names, and Back goes back", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?in=group:2&q=pond&user=1&tab=contact", signedIn: true });
    await page.getByText("1 person", { exact: true }).waitFor();
    const line = page.getByRole("tree").getByRole("treeitem", { selected: true });
    await line.getByText("North").waitFor();
    await page.getByRole("complementary").getByLabel("Email").waitFor();
    assert.equal(await page.getByRole("search").getByRole("searchbox").inputValue(), "pond");
    await page.getByRole("complementary").getByRole("tab", { name: "History" }).click();
    await until(() => page.url().endsWith("tab=history"));
    await page.goBack();
    await page.getByRole("complementary").getByLabel("Email").waitFor();
    await page.getByRole("link", { name: "Everyone" }).click();
    await page.getByText("3 people").waitFor();
    await page.goBack();
    await page.getByText("1 person", { exact: true }).waitFor();
    await finish();
});

test("every area opens by its link, without findings, in light and dark, wide and narrow, and mirrored", async () => {
    const some = ["overview", "directory", "import", "roles", "rights", "why", "audit"];
    const all = [...some, "documents", "messages", "addins", "board", "settings", "more"];
    for (const { areas, ...options } of [{ areas: all }, { areas: some, colorScheme: "dark" }, { areas: some, width: 390, height: 800 }]) {
        const { page, finish } = await openPage(shared, options);
        for (const area of areas) {
            await page.goto(`${shared.server.url}/${area}`);
            await page.locator(`nav.areas a[aria-current][href="/${area}"]`).waitFor();
            await settled(page);
            await checkAccess(page);
            for (const dir of ["ltr", "rtl"]) {
                const further = await page.evaluate(dir => {
                    document.documentElement.dir = dir;
                    return document.documentElement.scrollWidth - innerWidth;
                }, dir);
                assert.equal(further, 0, `${area} is wider than the window, ${dir}`);
            }
        }
        await finish();
    }
});

test("every command that the server runs has its button", async () => {
    const { page, finish } = await openPage(shared, { path: "/overview" });
    const answer = await page.context().request.get(`${shared.server.url}/api/v1/commands`);
    const { commands } = await answer.json();
    const nouns = new Set(commands.map(command => command.path[0]));
    // The board's commands are in a view of its own.
    const found = new Set(["board"]);
    for (const area of ["roles", "rights", "documents", "messages", "addins", "settings", "more"]) {
        await page.locator(`nav.areas a[href="/${area}"]`).click();
        await page.locator(`nav.areas a[aria-current][href="/${area}"]`).waitFor();
        await page.locator("section.noun, nav.tabs a").first().waitFor();
        const tabs = await page.locator("nav.tabs a").evaluateAll(all => all.map(one => new URL(one.href).searchParams.get("noun")));
        // The others have views of their own.
        const links = tabs.filter(tab => nouns.has(tab));
        for (const noun of links.length > 0 ? links : [{ roles: "role", settings: "setting" }[area]]) {
            found.add(noun);
            if (links.length > 0) {
                await page.locator(`nav.tabs a[href$="=${noun}"]`).click();
            }
            await page.locator(`section.noun[data-noun="${noun}"]`).waitFor();
            const bar = page.getByRole("group", { name: "What to do" });
            await bar.waitFor();
            const own = commands.filter(command => command.path[0] === noun);
            // One that lists without being told more is the table itself.
            assert.ok((await bar.getByRole("button").count()) >= own.length - 1, noun);
        }
    }
    assert.deepEqual([...nouns].sort(), [...found].sort());
    await finish();
});

test("a reason is found by a link", async () => {
    const { page, finish } = await openPage(shared, { path: "/why?user=amy&genre=mail&function=send" });
    await page.locator(".verdict").waitFor();
    await page.getByRole("cell", { name: "Editors" }).first().waitFor();
    await checkAccess(page);
    await finish();
});

test("the forms of the table do what their commands do", async () => {
    const { page, finish } = await openPage(shared, { path: "/roles?noun=role" });
    await page.getByRole("cell", { name: "Editors" }).waitFor();
    await page.getByRole("button", { name: "Create", exact: true }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByLabel("NAME", { exact: false }).first().fill("Authors");
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Run" }).click();
    await page.getByRole("cell", { name: "Authors" }).waitFor();
    // What a row shows needs no further word.
    await page.getByRole("row", { name: "Authors" }).getByRole("button", { name: "Show" }).click();
    await dialog.getByText("Authors").first().waitFor();
    await checkAccess(page);
    await finish();
});
