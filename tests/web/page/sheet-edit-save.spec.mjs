import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, settled, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "role create Editors",
    "user create amy --name 'Amy Pond' --title Clerk",
    "user create rory --name Rory",
]);

test("fields are changed and saved, and only those", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Title", { exact: true }).fill("Lead");
    await sheet.getByLabel("Department").fill("/Company/Sales");
    await sheet.getByLabel("Birthday").fill("1990-02-03");
    await sheet.getByText("3 fields changed").waitFor();
    await checkAccess(page);
    await page.keyboard.press("Control+s");
    await page.getByText("changed amy (id 1)").waitFor();
    const user = shared.server.json("user", "show", "amy");
    assert.deepEqual([user.title, user.department, user.birthday, user.name], ["Lead", "Sales", "1990-02-03", "Amy Pond"]);
    const [entry] = shared.server.json("audit", "list", "--limit", "1");
    assert.equal(entry.front_end, "web");
    assert.equal(entry.who, "Admin");
    assert.ok(!entry.command.includes("Amy Pond"));
    await sheet.getByRole("tab", { name: "Contact" }).click();
    await sheet.getByLabel("Email").fill("amy@example.org");
    await sheet.getByRole("tab", { name: "Member of" }).click();
    await sheet.getByText("/Company/Sales").waitFor();
    await checkAccess(page);
    await sheet.getByRole("tab", { name: "Contact" }).click();
    assert.equal(await sheet.getByLabel("Email").inputValue(), "amy@example.org");
    await sheet.getByRole("button", { name: "Save" }).click();
    await until(() => shared.server.json("user", "show", "amy").email === "amy@example.org");
    for (const tab of ["Roles", "Rights", "Security", "More", "History"]) {
        await sheet.getByRole("tab", { name: tab }).click();
        await settled(page);
        await checkAccess(page);
    }
    await finish();
});

test("leaving what is not saved is asked about", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=2" });
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Note").fill("kept?");
    await page.getByRole("grid").getByText("Amy Pond").click();
    const dialog = page.getByRole("dialog", { name: "Drop what you have changed?" });
    await dialog.getByRole("button", { name: "Cancel" }).click();
    assert.equal(await sheet.getByLabel("Note").inputValue(), "kept?");
    await page.getByRole("grid").getByText("Amy Pond").click();
    await dialog.getByRole("button", { name: "Drop" }).click();
    await sheet.getByRole("heading", { name: "Amy Pond" }).waitFor();
    assert.equal(shared.server.json("user", "show", "rory").note, "");
    await finish();
});

test("a wrong value is told beside the fields, and nothing is lost", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=2" });
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Department").fill("/No/Such");
    await sheet.getByRole("button", { name: "Save" }).click();
    await sheet.getByRole("alert").getByText("/No/Such").waitFor();
    assert.equal(await sheet.getByLabel("Department").inputValue(), "/No/Such");
    await finish();
});

test("a user whose password holds the login name is renamed with a new one", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=rory" });
    await page.getByText("1 person", { exact: true }).waitFor();
    const answer = page.getByRole("dialog", { name: "Rename rory" });
    await page.getByRole("grid").focus();
    await page.keyboard.press("F2");
    await answer.getByLabel("New login name").fill("rory.williams");
    await answer.getByLabel("New password").fill("a long password of Rory");
    await checkAccess(page);
    await answer.getByRole("button", { name: "Rename" }).click();
    await page.getByText("the new password is set").waitFor();
    assert.equal(shared.server.qvadmin("user", "exists", "rory.williams").trim(), "true");
    await finish();
});

test("a password is made up and shown once", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1&tab=security" });
    await page.getByText("No password is set.").waitFor();
    await page.getByRole("button", { name: "Generate" }).click();
    const made = (await page.locator(".secret").textContent()).trim();
    assert.ok(made.length >= 16);
    await checkAccess(page);
    await page.getByRole("dialog").getByRole("button", { name: "Close" }).click();
    await page.getByText("MD5 with login name").waitFor();
    await finish();
});
