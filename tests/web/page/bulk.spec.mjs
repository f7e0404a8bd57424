import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { checkAccess, openPage, settled, until, useServer } from "./support.mjs";

const people = Array.from({ length: 600 }, (_, i) => `clerk${i + 1},Clerk ${i + 1}\n`);
const shared = useServer(
    [
        "view create Company",
        "group create /Company/Sales",
        "group create /Company/Legal",
        "role create Editors",
        "plan create Weekly",
        "user create amy --name 'Amy Pond'",
        "user create rory --name Rory --email rory@example.org",
        "user create john --name Smith",
        "user create smithy --name SMITH",
        "member add /Company/Sales amy rory",
    ],
    { people: `login,name\n${people.join("")}` },
);
const members = path => shared.server.json("member", "list", path).map(row => row.name ?? row.login).sort();

async function atSales(page) {
    const tree = page.getByRole("tree");
    await tree.getByText("Company").dblclick();
    await tree.getByText("Sales").click();
    await page.getByText("2 people", { exact: true }).waitFor();
    return tree;
}

test("a whole result is selected but for one, and what is done with many is shown first", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=clerk" });
    await page.getByText("600 people", { exact: true }).waitFor();
    await page.getByLabel("Select all").click();
    await page.getByText("600 selected").waitFor();
    await page.getByLabel("Select clerk2", { exact: true }).click();
    await page.getByText("599 selected").waitFor();
    await page.getByRole("button", { name: "Lock", exact: true }).click();
    const dialog = page.getByRole("dialog", { name: "599 people" });
    await dialog.getByText("and 399 more").waitFor();
    await checkAccess(page);
    const locked = () => shared.server.countUsers("--locked");
    assert.equal(locked(), 0);
    await dialog.getByRole("button", { name: "Go on" }).click();
    await until(() => locked() === 599);
    assert.equal(shared.server.json("user", "show", "clerk2").locked, false);
    await page.getByRole("button", { name: "Add role…" }).click();
    await page.getByRole("dialog").getByLabel("Role").fill("Editors");
    await page.getByRole("dialog").getByRole("button", { name: "OK" }).click();
    await dialog.getByRole("button", { name: "Go on" }).click();
    await until(() => shared.server.json("role", "members", "Editors").length === 599);
    await page.getByRole("button", { name: "Clear" }).click();
    await page.getByLabel("Filter").selectOption("Locked");
    await page.getByText("599 people", { exact: true }).waitFor();
    await finish();
});

test("people are dragged to a group, after a question", async () => {
    const { page, finish } = await openPage(shared);
    const tree = await atSales(page);
    const amy = page.getByRole("grid").getByText("Amy Pond");
    await amy.dragTo(tree.getByText("Legal"));
    const dialog = page.getByRole("dialog", { name: "Move 1 person to Legal?" });
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Cancel" }).click();
    assert.deepEqual(members("/Company/Sales").length, 2);
    await amy.dragTo(tree.getByText("Legal"));
    await dialog.getByRole("button", { name: "Move" }).click();
    await page.getByText("is now in").first().waitFor();
    assert.equal(members("/Company/Legal").length, 1);
    assert.equal(members("/Company/Sales").length, 1);
    await page.getByRole("button", { name: "Undo" }).click();
    await until(() => members("/Company/Sales").length === 2);
    await finish();
});

test("people and groups are cut and put into a group by keys, and moved by a dialog", async () => {
    const { page, finish } = await openPage(shared);
    const tree = await atSales(page);
    await page.getByRole("grid").focus();
    await page.keyboard.press("Control+a");
    await page.getByText("2 selected").waitFor();
    await page.keyboard.press("Control+x");
    await page.getByText("choose a place in the tree").waitFor();
    await tree.focus();
    await page.keyboard.press("Home");
    await page.keyboard.type("legal");
    await page.keyboard.press("Control+v");
    await page.getByRole("dialog", { name: "Move 2 people to Legal?" }).getByRole("button", { name: "Move" }).click();
    await until(() => members("/Company/Legal").length === 2);

    await tree.getByText("Legal").click();
    await page.getByText("2 people", { exact: true }).waitFor();
    await page.getByLabel("Select rory").click();
    await page.getByRole("button", { name: "Move…" }).last().click();
    await page.getByRole("dialog").getByLabel("Group, as a path").fill("/Company/Sales");
    await page.getByRole("dialog").getByRole("button", { name: "Move" }).click();
    await until(() => members("/Company/Sales").length === 1);

    await settled(page);
    await tree.focus();
    await page.keyboard.press("Control+x");
    await page.getByText("choose a place in the tree").waitFor();
    await page.keyboard.type("sales");
    await page.keyboard.press("Control+v");
    await page.getByRole("dialog", { name: "Move Legal to Sales?" }).getByRole("button", { name: "Move" }).click();
    await until(() => shared.server.qvadmin("group", "list", "/Company/Sales").includes("Legal"));
    await finish();
});

test("a column of names is looked for, with those who are missing and those who share a name", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("grid").getByText("Amy Pond").waitFor();
    await page.getByRole("searchbox", { name: "Search people" }).focus();
    await page.evaluate(() => {
        const data = new DataTransfer();
        data.setData("text/plain", "AMY\nrory@example.org\r\nnobody\nsmith\n");
        document.activeElement.dispatchEvent(new ClipboardEvent("paste", { clipboardData: data, bubbles: true, cancelable: true }));
    });
    const dialog = page.getByRole("dialog", { name: "Find people by a list of names" });
    await dialog.getByText("2 of 4 found").waitFor();
    await dialog.getByText("Not found: 1").waitFor();
    await dialog.getByRole("listitem").getByText("nobody").waitFor();
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Show 2" }).waitFor();
    await dialog.getByLabel("smith", { exact: true }).selectOption({ index: 2 });
    await dialog.getByRole("button", { name: "Show 3" }).click();
    await page.getByText("3 people", { exact: true }).waitFor();
    await page.getByRole("grid").getByText("smithy").waitFor();
    await page.getByRole("grid").getByRole("button", { name: "Login" }).click();
    await until(async () => (await page.locator(".cell.login bdi").first().textContent()) === "smithy");
    await page.getByRole("button", { name: "Find names…" }).click();
    await dialog.getByLabel("Login names").fill("amy; rory");
    await dialog.getByRole("button", { name: "Find" }).click();
    await page.getByText("2 people", { exact: true }).waitFor();
    await finish();
});

test("fields of several are set, plans assigned and passwords made, shown once and saved", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=clerk10" });
    await page.getByText("11 people", { exact: true }).waitFor();
    await page.getByLabel("Select all").click();
    const dialog = page.getByRole("dialog");
    await page.getByRole("button", { name: "Set fields…" }).click();
    await dialog.getByLabel("Company", { exact: true }).fill("O'Brien, Ltd");
    await dialog.getByLabel("Set Note").check();
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Save" }).click();
    const companies = () => shared.server.json("user", "list", "--match", "clerk10", "--fields", "company").map(row => row.company);
    await until(() => companies().every(company => company === "O'Brien, Ltd"));
    await page.getByRole("button", { name: "Undo" }).first().click();
    await until(() => companies().every(company => company === ""));

    await page.getByRole("button", { name: "Assign plan…" }).click();
    await dialog.getByLabel("Backup plan").fill("Weekly");
    await dialog.getByRole("button", { name: "OK" }).click();
    await until(() => shared.server.json("plan", "show", "Weekly").users === 11);

    await page.getByRole("button", { name: "New passwords…" }).click();
    await dialog.getByRole("button", { name: "Make passwords" }).click();
    await dialog.getByText("11 new passwords, shown only now").waitFor();
    await checkAccess(page);
    const shown = await dialog.getByRole("listitem").allTextContents();
    assert.equal(shown.length, 11);
    await dialog.getByRole("button", { name: "Close" }).click();
    const question = page.getByRole("dialog", { name: "The passwords cannot be shown again" });
    await question.getByRole("button", { name: "Cancel" }).click();
    const [download] = await Promise.all([page.waitForEvent("download"), dialog.getByRole("button", { name: "Save as a file" }).click()]);
    const text = readFileSync(await download.path(), "utf8");
    assert.equal(text, ["login,password", ...shown.map(line => line.replace(": ", ","))].map(line => `${line}\n`).join(""));
    await dialog.getByRole("button", { name: "Close" }).click();
    await until(() => shared.server.json("user", "password", "status", "clerk100").set);
    await finish();
});

test("a password that is made for one who is selected is shown with the login name", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=clerk100" });
    await page.getByText("1 person", { exact: true }).waitFor();
    await page.getByLabel("Select all").click();
    const dialog = page.getByRole("dialog");
    await page.getByRole("button", { name: "New passwords…" }).click();
    await dialog.getByRole("button", { name: "Make passwords" }).click();
    assert.match(await dialog.getByRole("listitem").first().textContent(), /^clerk100: .{16}/);
    await finish();
});

test("what needs attention is counted, and leads to its list", async () => {
    const { page, finish } = await openPage(shared, { path: "/overview" });
    await page.getByRole("link", { name: "In no group: 603" }).waitFor();
    await page.getByRole("button", { name: "Check the directory" }).click();
    await page.getByRole("cell", { name: "users without a password who are not locked" }).waitFor();
    await checkAccess(page);
    await page.getByRole("link", { name: "In no group" }).click();
    await page.getByText("603 people", { exact: true }).waitFor();
    await finish();
});
