import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const kPeople = 1500;
const people = Array.from({ length: kPeople }, (_, i) => `user${i + 1},Person ${i + 1},${i % 3 === 0 ? "Clerk" : "Lead"}\n`);
const shared = useServer(["view create Company", "group create /Company/Sales"], {
    people: `login,name,title\n${people.join("")}`,
});

test("the list is scrolled to its end and back, and holds few rows", async () => {
    const { page, finish } = await openPage(shared);
    const grid = page.getByRole("grid");
    await grid.getByText("Person 1", { exact: true }).waitFor();
    await page.getByText("1,501 people").waitFor();
    assert.equal(await grid.getAttribute("aria-rowcount"), String(kPeople + 2));
    await checkAccess(page);
    await grid.focus();
    await page.keyboard.press("End");
    await grid.getByText("Person 1500", { exact: true }).waitFor();
    assert.ok((await grid.getByRole("row").count()) < 100);
    await page.keyboard.press("PageUp");
    await page.keyboard.press("Home");
    await grid.getByText("Person 1", { exact: true }).waitFor();
    assert.equal(await grid.getByText("Person 1500", { exact: true }).count(), 0);
    await page.keyboard.press("ArrowDown");
    await page.keyboard.press("Enter");
    await page.getByRole("complementary", { name: "User" }).getByRole("heading", { name: "Person 1" }).waitFor();
    await finish();
});

test("digits are sorted as numbers, and the search looks for parts in all columns", async () => {
    const { page, finish } = await openPage(shared);
    const grid = page.getByRole("grid");
    await grid.getByText("user2", { exact: true }).waitFor();
    const logins = await grid.locator(".cell.login bdi").allTextContents();
    assert.deepEqual(logins.slice(0, 4), ["Admin", "user1", "user2", "user3"]);
    await page.keyboard.press("/");
    await page.keyboard.type("149 CLERK");
    await page.getByText("3 people").waitFor();
    await grid.getByRole("button", { name: "Login" }).click();
    await until(() => page.url().includes("sort=-login"));
    await until(async () => (await grid.locator(".cell.login bdi").first().textContent()) === "user1498");
    await page.keyboard.press("/");
    await page.keyboard.press("Escape");
    await page.getByText("1,501 people").waitFor();
    await finish();
});

test("people are selected by keys, locked together, and unlocked by Undo", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=user1000" });
    const grid = page.getByRole("grid");
    await grid.getByText("user1000").waitFor();
    await page.goto(`${shared.server.url}/directory?q=user100`);
    await page.getByText("11 people").waitFor();
    await grid.focus();
    await page.keyboard.press(" ");
    await page.keyboard.press("Shift+ArrowDown");
    await page.keyboard.press("Shift+ArrowDown");
    await page.getByText("3 selected").waitFor();
    await checkAccess(page);
    await page.getByRole("button", { name: "Lock", exact: true }).click();
    await page.getByText(/locked user100 .*; locked/).waitFor();
    const locked = () => shared.server.countUsers("--locked");
    assert.equal(locked(), 3);
    await page.getByRole("button", { name: "Undo" }).click();
    await until(() => locked() === 0);
    await finish();
});

test("what is deleted is shown first, and many only after their number is typed", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=login:user7" });
    await page.getByText("1 person", { exact: true }).waitFor();
    await page.getByRole("grid").focus();
    await page.keyboard.press("Delete");
    const dialog = page.getByRole("dialog", { name: "Delete 1 user?" });
    await dialog.getByText("delete user7").waitFor();
    await checkAccess(page);
    await page.keyboard.press("Escape");
    await until(async () => (await dialog.count()) === 0);
    assert.equal(shared.server.qvadmin("user", "exists", "user7").trim(), "true");
    await page.keyboard.press("Delete");
    await dialog.getByRole("button", { name: "Go on" }).click();
    await page.getByText("Nobody matches this search.").waitFor();

    await page.goto(`${shared.server.url}/directory?q=user14`);
    await page.getByText("111 people").waitFor();
    await page.getByLabel("Select all").click();
    await page.getByText("111 selected").waitFor();
    await page.getByRole("button", { name: "Delete…" }).last().click();
    const many = page.getByRole("dialog");
    const goOn = many.getByRole("button", { name: "Go on" });
    await goOn.waitFor();
    assert.ok(await goOn.isDisabled());
    await many.getByLabel("Type 111").fill("111");
    await goOn.click();
    await page.getByText("Nobody matches this search.").waitFor();
    await finish();
});

test("a new user is made where the list stands", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("tree").getByText("Company").dblclick();
    await page.getByRole("tree").getByText("Sales").click();
    await page.getByText("Everyone / Company / Sales").waitFor();
    await page.getByText("Nobody is here.").waitFor();
    await page.getByRole("button", { name: "New user" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByLabel("Login").fill("zoe");
    await dialog.getByRole("button", { name: "Create" }).click();
    await page.getByRole("complementary", { name: "User" }).getByText("zoe").first().waitFor();
    await page.getByText("1 person", { exact: true }).waitFor();
    assert.ok(shared.server.qvadmin("member", "list", "/Company/Sales").includes("zoe"));
    await finish();
});
