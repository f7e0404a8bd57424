import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "group create /Company/مبيعات",
    "user create amy --name 'Amy Pond'",
    "member add /Company/Sales amy",
]);

test("from right to left, panels, names and keys are mirrored", async () => {
    const { page, finish } = await openPage(shared);
    await page.evaluate(() => (document.documentElement.dir = "rtl"));
    const tree = page.getByRole("tree");
    await tree.getByText("Company").waitFor();
    await tree.focus();
    await page.keyboard.press("ArrowLeft");
    await tree.getByText("مبيعات").waitFor();
    const box = async text => {
        const { x, width } = await tree.getByText(text, { exact: true }).boundingBox();
        return { start: x + width, end: x };
    };
    const folder = async text => (await tree.getByRole("treeitem").filter({ hasText: text }).locator("svg").last().boundingBox()).x;
    // A name begins beside its icon, whatever it is written in, and what is below is further to the left.
    for (const name of ["Company", "Sales", "مبيعات"]) {
        assert.ok(Math.abs((await folder(name)) - (await box(name)).start) < 10, name);
    }
    assert.ok((await box("Sales")).start < (await box("Company")).start);
    assert.equal((await box("Sales")).start, (await box("مبيعات")).start);
    await page.keyboard.press("ArrowRight");
    await until(async () => (await tree.getByText("Sales").count()) === 0);
    await page.keyboard.press("ArrowLeft");
    await tree.getByText("Sales").click();
    await page.getByRole("grid").getByText("Amy Pond").click();
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByRole("heading", { name: "Amy Pond" }).waitFor();
    const left = async one => (await one.boundingBox()).x;
    assert.ok((await left(sheet)) < (await left(page.getByRole("grid"))));
    assert.ok((await left(page.getByRole("grid"))) < (await left(tree)));
    await sheet.getByRole("tab", { name: "General" }).focus();
    await page.keyboard.press("ArrowLeft");
    await until(async () => (await sheet.getByRole("tab", { selected: true }).textContent()) === "Contact");
    await checkAccess(page);
    await finish();
});
