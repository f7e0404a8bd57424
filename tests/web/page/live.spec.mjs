import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "view create Company",
    "group create /Company/Sales",
    "user create amy --name 'Amy Pond' --title Clerk",
    "docroot create Company --path /srv/company",
]);
const count = page => page.locator(".list .total").textContent();

test("another window, another browser and another console are seen, by one stream a browser", async () => {
    const { page, finish } = await openPage(shared);
    const other = await openPage(shared, { path: "/directory?user=1" });
    await other.page.mouse.move(0, 0);
    let streams = 0;
    page.context().on("request", request => (streams += request.url().endsWith("/events") ? 1 : 0));
    const second = await page.context().newPage();
    await second.goto(`${shared.server.url}/documents`);
    await second.getByRole("tree").getByText("Company").waitFor();
    assert.equal(streams, 0, "a second window asks for no stream of its own");

    await page.getByRole("button", { name: "New user" }).click();
    await page.getByRole("dialog").getByLabel("Login").fill("rory");
    await page.getByRole("dialog").getByRole("button", { name: "Create" }).click();
    await page.getByText("rory").first().waitFor();
    await other.page.getByRole("grid").getByText("rory").first().waitFor();

    shared.server.qvadmin("user", "set", "amy", "--title", "Lead");
    shared.server.qvadmin("docroot", "create", "Archive", "--path", "/srv/archive");
    await until(async () => (await other.page.locator("#field-title").inputValue()) === "Lead");
    await second.getByRole("tree").getByText("Archive").waitFor();
    await other.finish();
    await finish();
});

test("a change made elsewhere leaves entries, selections and the rows under the pointer alone", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    await page.getByLabel("Note").fill("mine");
    const before = await count(page);
    await page.getByRole("grid").getByText("amy", { exact: true }).hover();
    shared.server.qvadmin("user", "create", "aaron");
    shared.server.qvadmin("user", "set", "amy", "--name", "Amy Williams");
    const renew = page.getByRole("button", { name: "Changed meanwhile: show anew" });
    await renew.waitFor();
    await page.getByRole("grid").getByText("Amy Williams").waitFor();
    assert.equal(await page.getByRole("grid").getByText("aaron").count(), 0);
    assert.equal(await count(page), before);
    await checkAccess(page);
    await renew.click();
    await page.getByRole("grid").getByText("aaron").first().waitFor();
    await renew.waitFor({ state: "detached" });
    assert.equal(await page.getByLabel("Note").inputValue(), "mine");
    await page.getByRole("button", { name: "Discard" }).click();
    await until(async () => (await page.getByLabel("Note").inputValue()) === "");
    await finish();
});

test("what a window has done itself is not news to it", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    await page.getByRole("grid").getByText("amy", { exact: true }).waitFor();
    await page.getByLabel("Note").fill("once");
    let lists = 0;
    const heard = page.waitForResponse(async answer => answer.url().endsWith("/events") && (await answer.text()).includes("event: changed"));
    page.on("request", request => (lists += /\/users\?(?!result)/.test(request.url()) ? 1 : 0));
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByText("changed amy").waitFor();
    await heard;
    // Further news shows that this was taken.
    shared.server.qvadmin("user", "create", "zoe");
    await page.getByRole("grid").getByText("zoe").first().waitFor();
    assert.equal(lists, 2);
    await finish();
});
