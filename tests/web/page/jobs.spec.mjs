import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const kClerks = 3000;
const people = Array.from({ length: kClerks }, (_, i) => `clerk${i + 1},Clerk ${i + 1}\n`);
const shared = useServer(["view create Company", "group create /Company/Sales"], { people: `login,name\n${people.join("")}` });
const locked = () => shared.server.countUsers("--locked");
const jobs = page => page.locator("details.jobs");

/** Selects all clerks and has something done with them, up to what is shown before. */
async function preview(page, action) {
    page.setDefaultTimeout(60000);
    await page.getByText("3,000 people", { exact: true }).waitFor();
    await page.getByLabel("Select all").click();
    await page.getByText("3,000 selected").waitFor();
    await page.getByRole("button", { name: action, exact: true }).click();
    return page.getByRole("dialog", { name: "3,000 people" });
}

test("what is done with many is a job: another window sees it, it is stopped, and undone as one", async () => {
    const other = await openPage(shared, { path: "/overview" });
    const { page, finish } = await openPage(shared, { path: "/directory?q=clerk" });
    const dialog = await preview(page, "Lock");
    await dialog.getByRole("button", { name: "Go on" }).click();
    const running = page.getByRole("dialog", { name: "Users: Lock" });
    await running.getByRole("button", { name: "Stop" }).waitFor();
    await running.getByRole("progressbar").waitFor();
    await checkAccess(page);
    await jobs(other.page).getByText("Jobs: 1").waitFor();
    await jobs(other.page).locator("summary").click();
    await checkAccess(other.page);
    await running.getByRole("button", { name: "Stop" }).click();
    await running.waitFor({ state: "detached" });
    await jobs(other.page).getByText("stopped").waitFor();
    const part = locked();
    assert.ok(part > 0 && part < kClerks && part % 200 === 0, `${part} are locked`);

    await jobs(page).locator("summary").click();
    await checkAccess(page);
    const [download] = await Promise.all([
        page.waitForEvent("download"),
        jobs(page).getByRole("link", { name: "Report of all rows" }).first().click(),
    ]);
    assert.equal(readFileSync(await download.path(), "utf8").split("\n").length, part + 2);
    await page.getByRole("button", { name: "Undo", exact: true }).first().click();
    await until(() => locked() === 0);
    await finish();
    await other.finish();
});

test("a job goes on without the page that has begun it, which shows its answer later", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?q=clerk" });
    const dialog = await preview(page, "Lock");
    await dialog.getByRole("button", { name: "Go on" }).click();
    await page.getByRole("dialog", { name: "Users: Lock" }).getByRole("button", { name: "Go on in the background" }).click();
    await page.reload();
    await until(() => locked() === kClerks);
    await jobs(page).locator("summary").click();
    await jobs(page).getByText("done").first().waitFor();
    await jobs(page).getByRole("button", { name: "Show" }).first().click();
    await page.getByRole("dialog", { name: "Users: Lock" }).getByText("locked clerk1 (id").first().waitFor();
    await checkAccess(page);
    await finish();
});

test("people are exported as a job, whose file is saved", async () => {
    const { page, finish } = await openPage(shared, { path: "/import" });
    page.setDefaultTimeout(60000);
    const form = page.getByRole("form", { name: "Export" });
    await form.getByRole("button", { name: "Export" }).click();
    const link = form.getByRole("link", { name: "Save the file" });
    await link.waitFor();
    await checkAccess(page);
    const [download] = await Promise.all([page.waitForEvent("download"), link.click()]);
    assert.equal(download.suggestedFilename(), "directory.csv");
    const lines = readFileSync(await download.path(), "utf8").trim().split("\n");
    assert.equal(lines.length, kClerks + 2);
    assert.match(lines[0], /^login,name,/);
    await form.getByLabel("Only what is in").fill("/No such place");
    await form.getByRole("button", { name: "Export" }).click();
    await form.getByRole("alert").waitFor();
    await finish();
});
