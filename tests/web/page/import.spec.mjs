import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Staff",
    "group create /Company/Left",
    "user create amy --name 'Amy Pond'",
    ...["ben", "cleo", "dora"].flatMap(login => [`user create ${login}`, `member add /Company/Staff ${login}`]),
]);
const count = () => shared.server.countUsers();

test("rows are pasted, their columns named, tried, imported, reported and undone", async () => {
    const { page, finish } = await openPage(shared, { path: "/import" });
    await page
        .getByLabel("Or paste rows")
        .fill("Login\tFull name\tdepartment\tShoe\namy\tAmelia\tSales\t7\nrory\tRory <b>\tSales/North\t9\n clara\tClara\t\t4\n");
    await page.getByRole("button", { name: "Read" }).click();
    await page.getByText("3 rows").waitFor();
    assert.equal(await page.getByLabel("Login is").inputValue(), "login");
    await page.getByLabel("Full name is").selectOption("name");
    await page.getByLabel("Departments are groups of the view").fill("Company");
    await page.getByLabel("Change users who are there").check();
    await checkAccess(page);
    await page.getByRole("button", { name: "Try" }).click();
    await page.getByText("1 new · 1 changed · 1 wrong").waitFor();
    await page.getByRole("cell", { name: "clara" }).first().waitFor();
    await checkAccess(page);
    const before = count();
    await page.getByRole("button", { name: "Import 2" }).click();
    await page.getByRole("region", { name: "Import", exact: true }).getByText("1 new · 1 changed · 1 wrong").waitFor();
    assert.equal(count(), before + 1);
    assert.equal(shared.server.json("user", "show", "rory").name, "Rory <b>");
    assert.equal(shared.server.json("user", "show", "amy").name, "Amelia");
    const waiting = page.waitForEvent("download");
    await page.getByRole("link", { name: "Rows that failed, as a file" }).click();
    assert.match((await waiting).suggestedFilename(), /^import-\d+-failed\.csv$/);
    await page.getByRole("button", { name: "Undo this import" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Go on" }).click();
    await until(() => count() === before);
    assert.equal(shared.server.json("user", "show", "amy").name, "Amy Pond");
    await finish();
});

test("a whole list locks who is not in it, once somebody has seen and agreed", async () => {
    const isLocked = login => shared.server.json("user", "show", login).locked;
    const { page, finish } = await openPage(shared, { path: "/import" });
    const enter = async text => {
        await page.getByLabel("Or paste rows").fill(text);
        await page.getByRole("button", { name: "Read" }).click();
        await page.getByRole("heading", { name: "Columns" }).waitFor();
    };
    await enter("login\ttitle\nben\tClerk\n");
    await page.getByLabel("This is the whole list").check();
    assert.ok(await page.getByLabel("Change users who are there").isDisabled());
    assert.ok(await page.getByRole("button", { name: "Try" }).isDisabled());
    await page.getByLabel("View or group, with all below").fill("/Company/Staff");
    await page.getByLabel("Who is in it and not in the list").selectOption("is locked");
    await checkAccess(page);
    await page.getByRole("button", { name: "Try" }).click();
    await page.getByRole("alert").getByText("2 of 3 users in /Company/Staff are not in the file").waitFor();
    await page.getByLabel("Nothing is imported if these are more than").fill("80%");
    await page.getByRole("button", { name: "Try" }).click();
    await page.getByText("Of 3 people in it, 2 are not in the list.").waitFor();
    const leavers = page.getByRole("region", { name: "Not in the list" });
    await leavers.getByRole("cell", { name: "cleo" }).waitFor();
    await leavers.getByRole("cell", { name: "dora" }).waitFor();
    await checkAccess(page);
    assert.equal(isLocked("cleo"), false);

    // Others than those who were shown are not dealt with.
    shared.server.qvadmin("member", "remove", "/Company/Staff", "dora");
    shared.server.qvadmin("member", "add", "/Company/Staff", "amy");
    await page.getByRole("button", { name: "Import 1, lock 2" }).click();
    await page.getByRole("alert").getByText("are others than those that the try has shown").waitFor();
    assert.equal(isLocked("cleo"), false);
    assert.equal(isLocked("amy"), false);
    await page.getByRole("button", { name: "Try" }).click();
    await leavers.getByRole("cell", { name: "amy" }).waitFor();
    await page.getByRole("button", { name: "Import 1, lock 2" }).click();
    const report = page.getByRole("region", { name: "Import", exact: true });
    await report.getByText("1 changed").waitFor();
    await report.getByRole("cell", { name: "locked" }).first().waitFor();
    assert.deepEqual(["amy", "ben", "cleo", "dora"].map(isLocked), [true, false, true, false]);
    await page.getByRole("button", { name: "Undo this import" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Go on" }).click();
    await until(() => !isLocked("cleo") && !isLocked("amy"));
    assert.equal(shared.server.json("user", "show", "ben").title, "");
    await finish();
});

test("who has left is moved, and deleted", async () => {
    const { page, finish } = await openPage(shared, { path: "/import" });
    await page.getByLabel("Or paste rows").fill("login\nben\n");
    await page.getByRole("button", { name: "Read" }).click();
    await page.getByLabel("This is the whole list").check();
    await page.getByLabel("View or group, with all below").fill("/Company/Staff");
    await page.getByLabel("Who is in it and not in the list").selectOption("is moved");
    await page.getByLabel("To the group").fill("/Company/Left");
    await page.getByLabel("Nothing is imported if these are more than").fill("100%");
    await page.getByRole("button", { name: "Try" }).click();
    await page.getByRole("button", { name: "Import 0, move 2" }).click();
    await until(() => shared.server.json("user", "show", "cleo").department === "Left");
    await page.getByLabel("View or group, with all below").fill("/Company/Left");
    await page.getByLabel("Who is in it and not in the list").selectOption("is deleted");
    await page.getByRole("button", { name: "Try" }).click();
    const before = count();
    await page.getByRole("button", { name: "Import 0, delete 2" }).click();
    await until(() => count() === before - 2);
    await finish();
});

test("a long import of a file is stopped, found again, and the page is of use meanwhile", async () => {
    const { page, finish } = await openPage(shared, { path: "/import" });
    const rows = Array.from({ length: 60000 }, (_, i) => `bulk${i};Größe ${i}\n`).join("");
    await page.getByLabel("File with comma-separated values").setInputFiles({
        name: "people.csv",
        mimeType: "text/csv",
        buffer: Buffer.from(`login;name\n${rows}`, "latin1"),
    });
    await page.getByText("60,000 rows").waitFor();
    await page.getByRole("cell", { name: "Größe 0" }).waitFor();
    await page.getByRole("button", { name: "Try" }).click();
    await page.getByRole("button", { name: "Stop" }).waitFor();
    await page.goto(`${shared.server.url}/directory?user=2`);
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Title", { exact: true }).fill("Lead");
    await sheet.getByRole("button", { name: "Save" }).click();
    await page.getByText("changed ben (id 2)").waitFor();
    await page.goto(`${shared.server.url}/import`);
    await page.getByRole("button", { name: "Stop" }).click();
    await page.getByRole("alert").getByText("stopped").waitFor();
    await finish();
});
