import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const groups = Array.from({ length: 240 }, (_, i) => `group create /Company/Many/Group${String(i).padStart(3, "0")}`);
const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "group create /Company/Sales/North",
    "group create /Company/Service",
    "group create /Company/Many",
    ...groups,
    "user create amy",
    "member add /Company/Sales/North amy",
]);

/** The line that keys act on. */
async function active(page) {
    const id = await page.getByRole("tree").getAttribute("aria-activedescendant");
    return (await page.locator(`#${id} .name`).textContent()).trim();
}

test("the tree is used by keys alone", async () => {
    const { page, finish } = await openPage(shared);
    const tree = page.getByRole("tree");
    await tree.getByText("Company").waitFor();
    await tree.focus();
    await page.keyboard.press("ArrowRight");
    await tree.getByText("Sales").waitFor();
    await checkAccess(page);
    await page.keyboard.press("ArrowRight");
    await until(async () => (await active(page)) === "Many");
    await page.keyboard.type("sa");
    await until(async () => (await active(page)) === "Sales");
    // Any other key resets what has been typed.
    await page.keyboard.press("Home");
    await page.keyboard.type("ma");
    await until(async () => (await active(page)) === "Many");
    await page.keyboard.press("Home");
    await page.keyboard.type("sa");
    await until(async () => (await active(page)) === "Sales");
    await page.keyboard.press("ArrowRight");
    await tree.getByText("North").waitFor();
    await page.keyboard.press("ArrowRight");
    await until(async () => (await active(page)) === "North");
    await page.keyboard.press("Enter");
    await page.getByText("1 person", { exact: true }).waitFor();
    assert.match(page.url(), /in=group:/);
    const line = tree.getByRole("treeitem", { selected: true });
    assert.equal(await line.getAttribute("aria-level"), "3");
    await page.keyboard.press("ArrowLeft");
    await until(async () => (await active(page)) === "Sales");
    await page.keyboard.press("ArrowLeft");
    await until(async () => (await tree.getByText("North").count()) === 0);
    await page.keyboard.press("Home");
    await until(async () => (await active(page)) === "Company");
    await page.keyboard.press("End");
    await until(async () => (await active(page)) === "Service");
    await finish();
});

test("a long list of groups is drawn where it is seen, and its end is one key away", async () => {
    const { page, finish } = await openPage(shared);
    const tree = page.getByRole("tree");
    await tree.getByText("Company").waitFor();
    await tree.focus();
    await page.keyboard.press("ArrowRight");
    await tree.getByText("Many").waitFor();
    await page.keyboard.press("ArrowDown");
    await page.keyboard.press("ArrowRight");
    await tree.getByText("Group000").waitFor();
    assert.ok((await tree.getByRole("treeitem").count()) < 100);
    await page.keyboard.press("End");
    await until(async () => (await active(page)) === "Service");
    await page.keyboard.press("PageUp");
    await until(async () => /^Group2/.test(await active(page)));
    assert.ok((await tree.getByRole("treeitem").count()) < 100);
    await finish();
});

test("a group is made, renamed, moved and deleted", async () => {
    const { page, finish } = await openPage(shared);
    const tree = page.getByRole("tree");
    await tree.getByText("Company").click();
    await page.getByRole("button", { name: "New group" }).click();
    await page.getByRole("dialog").getByLabel("Name").fill("A/B");
    await page.getByRole("dialog").getByRole("button", { name: "Create" }).click();
    await tree.getByText("A/B").click();
    await until(() => page.url().includes("in=group:"));
    await tree.focus();
    await page.keyboard.press("F2");
    await page.getByRole("dialog").getByLabel("Name").fill("Office");
    await checkAccess(page);
    await page.keyboard.press("Enter");
    await tree.getByText("Office").waitFor();
    await page.getByLabel("More for this place").click();
    await page.getByRole("button", { name: "Move…" }).click();
    await page.getByRole("dialog").getByLabel("New parent").fill("/Company/Service");
    await page.getByRole("dialog").getByRole("button", { name: "Move" }).click();
    await until(() => shared.server.qvadmin("group", "list", "/Company/Service").includes("Office"));
    await page.getByText("moved").first().waitFor();
    await tree.focus();
    await page.keyboard.press("Delete");
    await page.getByRole("dialog").getByText("delete").first().waitFor();
    await checkAccess(page);
    await page.getByRole("button", { name: "Go on" }).click();
    await until(() => !shared.server.qvadmin("group", "list", "/Company/Service").includes("Office"));
    await finish();
});
