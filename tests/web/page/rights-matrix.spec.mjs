import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "role create Editors",
    "role create Authors",
    "right grant role:Editors mail size 4",
    "right grant role:Authors mail size 4",
    "right grant role:Editors mail a/b 1",
]);
const matrix = () => shared.server.qvadmin("right", "matrix", "Editors", "Authors", "-o", "csv").trim().split("\n").slice(1);

test("rights of several roles are edited, shown before, saved as one change and undone", async () => {
    const { page, finish } = await openPage(shared, { path: "/rights" });
    const before = matrix();
    const cell = (role, name) => page.getByLabel(`${role}: ${name}`, { exact: true });
    await cell("Editors", "mail size").fill("10");
    await cell("Editors", "mail a/b").fill("");
    await page.getByLabel("Genre").fill("pages");
    await page.getByLabel("Function", { exact: true }).fill("edit");
    await page.getByRole("button", { name: "Add a function" }).click();
    await cell("Authors", "pages edit").fill("unlimited");
    await page.getByText("Rights changed: 3").waitFor();
    await checkAccess(page);
    await page.getByLabel("Only functions with a difference").click();
    await cell("Authors", "mail size").waitFor();
    await page.getByLabel("Find a function").fill("edit");
    await until(async () => (await cell("Authors", "mail size").count()) === 0);
    await page.keyboard.press("Control+s");
    const plan = page.getByRole("dialog", { name: "Change 3 rights?" });
    await plan.getByText("Editors (role 1): 'mail' 'size' from 4 to 10").waitFor();
    await plan.getByRole("button", { name: "Cancel" }).click();
    assert.deepEqual(matrix(), before);
    await page.getByRole("link", { name: "Overview" }).click();
    await page.getByRole("dialog", { name: "Drop what you have changed?" }).getByRole("button", { name: "Cancel" }).click();
    await page.getByRole("button", { name: "Save" }).click();
    await plan.getByRole("button", { name: "Go on" }).click();
    await until(() => matrix().join() === "mail,size,10,4,pages,edit,,-1");
    await page.getByRole("button", { name: "Undo" }).click();
    await until(() => matrix().join() === before.join());
    await finish();
});

test("a wrong power is told, and the edits are kept", async () => {
    const { page, finish } = await openPage(shared, { path: "/rights?noun=matrix" });
    const cell = page.getByLabel("Editors: mail size", { exact: true });
    await cell.fill("much");
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByRole("alert").getByText("much").waitFor();
    assert.equal(await cell.inputValue(), "much");
    await page.getByRole("button", { name: "Discard" }).click();
    assert.equal(await cell.inputValue(), "4");
    await finish();
});
