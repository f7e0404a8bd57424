import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer(["view create Company", "user create amy --name 'Amy Pond'"]);
const count = () => shared.server.json("user", "list").length;

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
    await until(() => count() === before);
    assert.equal(shared.server.json("user", "show", "amy").name, "Amy Pond");
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
    await page.goto(`${shared.server.url}/directory?user=1`);
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Title", { exact: true }).fill("Lead");
    await sheet.getByRole("button", { name: "Save" }).click();
    await page.getByText("changed amy (id 1)").waitFor();
    await page.goto(`${shared.server.url}/import`);
    await page.getByRole("button", { name: "Stop" }).click();
    await page.getByRole("alert").getByText("stopped").waitFor();
    await finish();
});
