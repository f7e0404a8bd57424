import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const withPassword = login => [`user create ${login} --name 'The ${login}'`, `user password set ${login} --password-file password`];
const shared = useServer([
    ...withPassword("helper"),
    ...withPassword("reader"),
    "user create amy --name 'Amy Pond'",
    "view create Company",
    "console set helper help-desk",
    "console set reader read-only",
]);
const buttons = page => page.locator("main button:visible").evaluateAll(all => all.map(one => one.textContent.trim() || one.ariaLabel));
const amy = page => page.getByRole("grid").getByText("Amy Pond");

test("who may only read is offered nothing that changes anything", async () => {
    const { page, finish } = await openPage(shared, { login: "reader" });
    await amy(page).waitFor();
    const list = await buttons(page);
    assert.ok(!list.includes("New user") && !list.includes("New group"), String(list));
    assert.equal(await page.getByRole("link", { name: "Import" }).count(), 0);
    await page.getByLabel("Select amy").check();
    await page.getByText("1 selected").waitFor();
    for (const name of ["Lock", "Unlock", "Move…", "Add to group…", "Delete…"]) {
        assert.equal(await page.getByRole("button", { name, exact: true }).count(), 0, name);
    }
    await amy(page).click();
    const title = page.getByLabel("Title", { exact: true });
    await title.waitFor();
    assert.ok(await title.isDisabled());
    assert.equal(await page.getByRole("button", { name: "Save" }).count(), 0);
    await page.getByRole("tab", { name: "Security" }).click();
    assert.equal(await page.getByRole("button", { name: "New password…" }).count(), 0);
    await checkAccess(page);
    await finish();
});

test("the help desk locks, unlocks and gives passwords, but not to super users", async () => {
    const { page, finish } = await openPage(shared, { login: "helper" });
    await amy(page).waitFor();
    await page.getByLabel("Select amy").check();
    assert.equal(await page.getByRole("button", { name: "Delete…" }).count(), 0);
    await page.getByRole("button", { name: "Lock", exact: true }).click();
    await page.locator(".toast").getByText("locked amy").waitFor();
    assert.equal(await page.locator(".toast").getByRole("button", { name: "Undo" }).count(), 0);
    assert.equal(shared.server.json("user", "show", "amy").locked, true);
    await amy(page).click();
    await page.getByRole("tab", { name: "Security" }).click();
    await page.getByRole("button", { name: "New password…" }).waitFor();
    await page.getByRole("grid").locator(".cell.login").getByText("Admin", { exact: true }).click();
    await until(async () => (await page.getByRole("button", { name: "New password…" }).count()) === 0, "for a super user");
    await page.getByLabel("Select amy").uncheck();
    await page.getByLabel("Select Admin").check();
    await page.getByRole("button", { name: "Lock", exact: true }).click();
    await page.locator(".toast").getByText("Admin is a super user, whom").waitFor();
    assert.equal(shared.server.json("user", "show", "Admin").locked, false);
    await checkAccess(page);
    await finish();
});
