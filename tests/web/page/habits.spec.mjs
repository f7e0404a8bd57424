// What somebody who uses such tools every day takes for granted.
import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, password, settled, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "group create /Company/Legal",
    "user create amy --name 'Amy Pond'",
    "user create bill --name 'Bill Potts'",
    "user create clara --name 'Clara Oswald'",
    "user create donna --name 'Donna Noble'",
    "member add /Company/Sales amy bill clara donna",
    "role create Editors --description 'They edit'",
    "role create Spare",
    "role add Editors amy",
    "addin create Calendar --type 1",
]);
const isOpen = page => page.locator("details.user").evaluate(menu => menu.open);
const focused = page => page.evaluate(() => document.activeElement?.id || document.activeElement?.textContent);

test("who has left a list is no longer selected in it", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("tree").getByText("Company").click();
    await page.getByText("Everyone / Company").waitFor();
    await settled(page);
    await page.getByLabel("Select bill").check();
    await page.getByRole("button", { name: "Lock", exact: true }).click();
    await page.getByText("locked bill (id 2)").waitFor();
    await settled(page);
    assert.equal(await page.getByText("1 selected").count(), 1, "who stays in it stays selected");
    await page.getByRole("button", { name: "Clear" }).click();

    await page.getByRole("tree").getByText("Company").dblclick();
    await page.getByRole("tree").getByText("Sales").click();
    await page.getByText("4 people").waitFor();
    await page.getByLabel("Select clara").check();
    await page.getByRole("button", { name: "Remove from here" }).click();
    await page.getByText("3 people").waitFor();
    await page.getByRole("button", { name: "New user" }).waitFor();
    assert.equal(await page.getByText("1 selected").count(), 0);
    await finish();
});

test("words in tables are not broken, and wide tables are scrolled", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1&tab=history", width: 390, height: 700 });
    for (const path of ["", "/audit"]) {
        path && (await page.goto(shared.server.url + path));
        const head = page.getByRole("columnheader", { name: "Who" });
        await head.waitFor();
        const lines = await head.evaluate(cell => {
            const range = document.createRange();
            range.selectNodeContents(cell);
            return range.getClientRects().length;
        });
        assert.equal(lines, 1, `${path}: a word stands in ${lines} lines`);
    }
    await finish();
});

test("a menu closes with a click elsewhere, and with Esc, which leaves the rest open", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    const menu = page.locator("details.user > summary");
    await menu.click();
    assert.ok(await isOpen(page));
    await page.locator(".list .total").click();
    await until(async () => !(await isOpen(page)));
    await menu.click();
    await page.getByRole("button", { name: "Sign out" }).focus();
    await page.keyboard.press("Escape");
    await until(async () => !(await isOpen(page)));
    assert.equal(await focused(page), "Admin");
    assert.match(page.url(), /user=1/);
    await finish();
});

test("Enter agrees to what was dropped, and the field for the password has the focus where it is asked for", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory" });
    await page.getByRole("tree").getByText("Company").dblclick();
    await page.getByRole("tree").getByText("Legal").waitFor();
    await page.getByRole("grid").getByText("amy", { exact: true }).dragTo(page.getByRole("tree").getByText("Legal"));
    await page.getByRole("dialog", { name: "Move 1 person to Legal?" }).waitFor();
    await page.keyboard.press("Enter");
    await page.getByText("is now in /Company/Legal").waitFor();

    await page.getByRole("grid").getByText("amy", { exact: true }).click();
    await page.getByLabel("Title", { exact: true }).fill("Lead");
    await page.context().clearCookies();
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByRole("dialog").waitFor();
    await until(async () => (await focused(page)) === "password");
    await page.keyboard.type(password);
    await page.keyboard.press("Enter");
    await page.getByText("changed amy").waitFor();

    await page.context().clearCookies();
    await page.goto(shared.server.url);
    await page.getByLabel("Login name").waitFor();
    await until(async () => (await focused(page)) === "login");
    await finish();
});

test("what is sent twice while the answer is on its way is done once", async () => {
    const { page, finish } = await openPage(shared);
    let asked = 0;
    await page.route("**/api/v1/commands/user/{create,set}", async route => {
        ++asked;
        await new Promise(resolve => setTimeout(resolve, 300));
        await route.continue();
    });
    await page.getByRole("button", { name: "New user" }).click();
    await page.getByRole("dialog").getByLabel("Login").fill("twice");
    await page.getByRole("button", { name: "Create" }).dblclick();
    await page.getByRole("heading", { name: "twice" }).waitFor();
    await page.getByLabel("Title", { exact: true }).fill("Lead");
    await page.getByRole("button", { name: "Save" }).dblclick();
    await page.getByText("changed twice").waitFor();
    await settled(page);
    assert.equal(asked, 2);
    assert.equal(await page.getByRole("alert").count(), 0);
    await finish();
});

test("a server that does not answer is said once, and when it is back the page shows what is there", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("grid").getByText("bill", { exact: true }).waitFor();
    await page.context().route("**/api/v1/**", route => route.abort());
    await page.getByRole("searchbox", { name: /Search people/ }).fill("clara");
    const notice = page.getByText("The server does not answer. The page goes on when it does.");
    await notice.waitFor();
    await checkAccess(page);
    await page.context().unroute("**/api/v1/**");
    await notice.waitFor({ state: "detached" });
    await page.getByText("1 person", { exact: true }).waitFor();
    assert.equal(await page.getByRole("alert").count(), 0);
    await page.route("**/*", route => route.continue());
    // Chromium writes refused connections to its console, which is not what this looks for.
    await finish();
});

test("Esc in the list closes the sheet, and F6 goes from panel to panel", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    await page.locator("#tabpanel").waitFor();
    await page.getByRole("tree").focus();
    await page.keyboard.press("F6");
    assert.equal(await focused(page), "people");
    await page.keyboard.press("F6");
    assert.equal(await focused(page), "tabpanel");
    await page.keyboard.press("F6");
    await page.keyboard.press("F6");
    assert.equal(await focused(page), "tree");
    await page.keyboard.press("Shift+F6");
    await page.keyboard.press("Shift+F6");
    await page.keyboard.press("Shift+F6");
    assert.equal(await focused(page), "people");
    await page.keyboard.press("Escape");
    await until(() => !page.url().includes("user="));
    assert.equal(await focused(page), "people");
    await finish();
});

test("a row is shown, changed from what it is, and deleted, without its name being typed", async () => {
    const { page, finish } = await openPage(shared, { path: "/roles" });
    const row = name => page.getByRole("row", { name: new RegExp(`\\b${name}\\b`) });
    await row("Editors").getByRole("button", { name: "Show" }).click();
    const dialog = page.getByRole("dialog", { name: "Editors", exact: true });
    await dialog.getByText("They edit").waitFor();
    assert.equal(await dialog.locator("input").count(), 0);
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Members" }).click();
    await page.getByRole("dialog", { name: "Editors: Members" }).getByRole("cell", { name: "amy", exact: true }).waitFor();
    await page.keyboard.press("Escape");
    await page.keyboard.press("Escape");

    await row("Editors").getByRole("button", { name: "Change" }).click();
    const change = page.getByRole("dialog", { name: "Editors: Change" });
    await until(async () => (await change.getByLabel("Description").inputValue()) === "They edit");
    assert.equal(await change.getByLabel("Name").inputValue(), "Editors");
    await change.getByLabel("Description").fill("They write");
    await change.getByRole("button", { name: "Save" }).click();
    await row("Editors").getByText("They write").waitFor();
    assert.equal(shared.server.json("role", "show", "Editors").description, "They write");

    await row("Spare").getByRole("button", { name: "Delete" }).click();
    await page.getByRole("dialog", { name: "Delete 1 role?" }).getByRole("button", { name: "Go on" }).click();
    await row("Spare").waitFor({ state: "detached" });
    await finish();
});

test("what is asked about a thing that is shown leaves out what it is called, and has the words of the page", async () => {
    const { page, finish } = await openPage(shared, { path: "/addins" });
    await page.getByRole("row", { name: /Calendar/ }).getByRole("button", { name: "Show" }).click();
    await page.getByRole("dialog", { name: "Calendar", exact: true }).getByRole("button", { name: "Switch off" }).click();
    await page.getByRole("dialog", { name: "Calendar: Switch off" }).getByRole("button", { name: "Run" }).click();
    await until(() => shared.server.json("addin", "show", "Calendar").disabled === true);
    await page.goto(`${shared.server.url}/roles`);
    await page.getByRole("row", { name: /Editors/ }).getByRole("button", { name: "Show" }).click();
    await page.getByRole("dialog", { name: "Editors", exact: true }).getByRole("button", { name: "Add" }).click();
    await until(async () => (await focused(page)) === "parameter-USER");
    await page.getByText("with “In”: also members of the groups below it").waitFor();
    await page.getByText("only users with this text in what “Users: List” shows, case not counting").waitFor();
    await finish();
});

test("groups and roles of a user are taken away where they are listed", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=2&tab=groups" });
    await page.getByRole("row", { name: /Sales/ }).getByRole("button", { name: "Remove" }).click();
    await page.getByText("no longer a member").waitFor();
    await page.getByRole("row", { name: /Sales/ }).waitFor({ state: "detached" });
    await page.goto(`${shared.server.url}/directory?user=1&tab=roles`);
    await page.getByRole("row", { name: /Editors/ }).getByRole("button", { name: "Remove" }).click();
    await until(() => shared.server.json("role", "members", "Editors").length === 0);
    await finish();
});

test("undoing from a list of old changes asks first", async () => {
    const { page, finish } = await openPage(shared, { path: "/audit" });
    const row = page.getByRole("row", { name: /view create Company/ });
    await page.getByRole("row", { name: /role create Editors/ }).getByRole("button", { name: "Undo" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Cancel" }).click();
    await settled(page);
    await row.waitFor();
    assert.equal(shared.server.json("role", "list").length, 1);
    await finish();
});

test("keys pressed in the tree while it is read anew after a move stay where they led", async () => {
    const { page, finish } = await openPage(shared);
    const tree = page.getByRole("tree");
    const active = async () => {
        const id = await tree.getAttribute("aria-activedescendant");
        return (await page.locator(`#${id} .name`).textContent()).trim();
    };
    await tree.getByText("Company").dblclick();
    await tree.getByText("Legal").click();
    await settled(page);
    const answers = [];
    await page.route("**/api/v1/users?*", async route => {
        await new Promise(resolve => answers.push(resolve));
        await route.continue();
    });
    await page.getByLabel("More for this place").click();
    await page.getByRole("button", { name: "Move…" }).click();
    await page.getByRole("dialog").getByLabel("New parent").fill("/Company/Sales");
    await page.getByRole("dialog").getByRole("button", { name: "Move" }).click();
    await until(() => answers.length === 1);
    await page.getByRole("dialog").waitFor({ state: "detached" });
    await tree.focus();
    await page.keyboard.type("sales");
    assert.equal(await active(), "Sales");
    answers[0]();
    await page.getByText("Company / Sales / Legal").waitFor();
    await settled(page);
    assert.equal(await active(), "Sales");
    await finish();
});

test("when what had the focus goes with the selection, the list has it", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("tree").getByText("Company").dblclick();
    await page.getByRole("tree").getByText("Sales").click();
    await page.getByLabel("Select donna").check();
    await page.getByRole("button", { name: "Remove from here" }).click();
    await page.getByRole("button", { name: "New user" }).waitFor();
    assert.equal(await focused(page), "people");
    await finish();
});

const menu = page => page.getByRole("menu", { name: "What to do" });
const items = page => menu(page).getByRole("menuitem").allTextContents();

test("the right button and keys open a menu of what can be done with people", async () => {
    const { page, finish } = await openPage(shared);
    const row = login => page.getByRole("row").filter({ has: page.getByLabel(`Select ${login}`, { exact: true }) });
    await row("amy").click({ button: "right" });
    await menu(page).waitFor();
    await page.getByText("1 selected").waitFor();
    assert.deepEqual((await items(page)).slice(0, 4), ["Show Enter", "Rename… F2", "Lock", "Unlock"]);
    const bar = await page.locator(".list .bar button:not(.link)").allTextContents();
    assert.deepEqual((await items(page)).slice(2).map(text => text.replace(" Del", "")), bar);
    await checkAccess(page);
    assert.equal(await focused(page), "Show Enter");
    await page.keyboard.press("ArrowUp");
    assert.equal(await focused(page), "Delete… Del");
    await page.keyboard.press("Home");
    await page.keyboard.press("u");
    assert.equal(await focused(page), "Unlock");
    await page.keyboard.press("Escape");
    await menu(page).waitFor({ state: "detached" });

    // Those who are selected stay so, and what is done is done with them.
    await page.getByLabel("Select bill").check();
    await row("amy").click({ button: "right" });
    await page.getByText("2 selected").waitFor();
    assert.ok(!(await items(page)).includes("Rename… F2"));
    await menu(page).getByRole("menuitem", { name: "Lock", exact: true }).click();
    await until(() => shared.server.json("user", "show", "bill").locked);
    await menu(page).waitFor({ state: "detached" });
    await row("clara").click({ button: "right" });
    await page.getByText("1 selected").waitFor();
    await page.mouse.click(700, 700);
    await menu(page).waitFor({ state: "detached" });

    // By keys: of the row that they act on, and the focus goes back to the list.
    await page.getByRole("button", { name: "Clear" }).click();
    await page.getByRole("grid").focus();
    await page.keyboard.press("Home");
    await page.keyboard.press("Shift+F10");
    await menu(page).waitFor();
    await page.getByText("1 selected").waitFor();
    await page.keyboard.press("Escape");
    await menu(page).waitFor({ state: "detached" });
    assert.equal(await focused(page), "people");
    await page.keyboard.press("ContextMenu");
    await menu(page).waitFor();
    await page.keyboard.press("ArrowDown");
    await page.keyboard.press("Enter");
    await page.getByRole("dialog", { name: /^Rename/ }).getByRole("button", { name: "Cancel" }).click();
    assert.equal(await focused(page), "people");
    await finish();
});

test("the right button and keys open a menu of what can be done with a place", async () => {
    const { page, finish } = await openPage(shared);
    const tree = page.getByRole("tree");
    await tree.getByText("Company").click({ button: "right" });
    await menu(page).waitFor();
    assert.deepEqual(await items(page), ["New group", "Rename… F2", "Delete… Del"]);
    await page.getByText("Everyone / Company").waitFor();
    await checkAccess(page);
    await menu(page).getByRole("menuitem", { name: "New group" }).click();
    await page.getByRole("dialog", { name: "Under Company" }).getByLabel("Name").fill("Made");
    await page.keyboard.press("Enter");
    await tree.getByText("Made").waitFor();
    await tree.focus();
    await page.keyboard.press("End");
    await page.keyboard.press("Shift+F10");
    await menu(page).waitFor();
    assert.ok((await items(page)).includes("Move…"));
    await page.keyboard.press("Escape");
    assert.equal(await focused(page), "tree");
    await finish();
});

test("single keys search, make a user and show all keys, unless they are switched off", async () => {
    const { page, finish } = await openPage(shared);
    await page.keyboard.press("n");
    await page.getByRole("dialog", { name: "New user" }).getByRole("button", { name: "Cancel" }).click();
    await page.keyboard.press("?");
    await page.getByRole("dialog", { name: "Keys" }).getByText("Shift+F10").waitFor();
    await checkAccess(page);
    await page.keyboard.press("n");
    assert.equal(await page.getByRole("dialog").count(), 1);
    await page.keyboard.press("Escape");
    await page.keyboard.press("/");
    await page.keyboard.type("n?/");
    assert.equal(await page.getByRole("searchbox", { name: "Search people" }).inputValue(), "n?/");
    await page.keyboard.press("Escape");
    await page.locator("details.user > summary").click();
    await page.getByLabel("Keys without Ctrl").uncheck();
    await page.keyboard.press("Escape");
    for (const key of ["n", "?", "/"]) {
        await page.keyboard.press(key);
    }
    assert.equal(await page.getByRole("dialog").count(), 0);
    await finish();
});
