import assert from "node:assert/strict";
import { test } from "node:test";
import { openPage, until, useServer } from "./support.mjs";

const texts = [
    "<script>document.title='run'</script>",
    "\"><img src=x onerror=\"document.title='run'\">",
    "javascript:document.title='run'",
    "'; DROP TABLE qv_User; --",
    "${7*7}{{7*7}}",
    "‮live‬ שלום",
    "日本語 😀",
    "</title><svg onload=document.title='run'>",
];
const shared = useServer(["view create Company"]);

test("texts of the directory are shown as they are, and run nothing", async () => {
    const { page, finish } = await openPage(shared);
    for (const [i, text] of texts.entries()) {
        await page.getByRole("button", { name: "New user" }).click();
        const dialog = page.getByRole("dialog");
        await dialog.getByLabel("Login").fill(`user${i}`);
        await dialog.getByLabel("Name").fill(text);
        await dialog.getByLabel("Title").fill(text);
        await dialog.getByRole("button", { name: "Create" }).click();
        await until(() => shared.server.json("user", "list").some(user => user.login === `user${i}`));
        assert.equal(shared.server.json("user", "show", `user${i}`).title, text);
        await page.getByRole("complementary").getByRole("heading", { level: 2 }).filter({ hasText: text }).waitFor();
        await page.getByRole("grid").locator(".cell.title bdi").filter({ hasText: text }).waitFor();
        await page.getByRole("complementary").getByRole("button", { name: "Close" }).click();
    }
    await page.getByRole("tree").getByText("Company").click();
    for (const [i, text] of texts.entries()) {
        await page.getByRole("button", { name: "New group" }).click();
        await page.getByRole("dialog").getByLabel("Name").fill(`${i}${text}`);
        await page.getByRole("dialog").getByRole("button", { name: "Create" }).click();
        await page.getByRole("tree").locator(".name").filter({ hasText: `${i}${text}` }).waitFor();
    }
    await page.goto(`${shared.server.url}/audit`);
    await page.getByRole("cell").filter({ hasText: "user0" }).first().waitFor();
    await page.goto(`${shared.server.url}/directory?q=${encodeURIComponent(texts[0])}&user=%3Cscript%3E`);
    await page.getByRole("grid").waitFor();
    assert.doesNotMatch(await page.title(), /run/);
    await finish();
});
