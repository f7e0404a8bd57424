// Answers that come when something else has been asked by then.
import assert from "node:assert/strict";
import { test } from "node:test";
import { openPage, settled, until, useServer } from "./support.mjs";

const kPeople = 500;
const people = Array.from({ length: kPeople }, (_, i) => `user${i + 1},Person ${i + 1}\n`);
const shared = useServer(
    [
        "view create Company",
        "group create /Company/Sales",
        "role create Editors",
        "role create Authors",
        "role add Editors user1",
        "right grant role:Editors mail send 1",
        "right grant role:Editors mail size 4",
        "right grant role:Authors mail size 7",
    ],
    { people: `login,name\n${people.join("")}` },
);

/** Has the next request of an address wait. @return waits until it has been made, and gives a function that lets it go on. */
async function hold(page, address) {
    let begin;
    const begun = new Promise(resolve => (begin = resolve));
    await page.route(
        address,
        route =>
            begin(async () => {
                await route.continue();
                await settled(page);
            }),
        { times: 1 },
    );
    return () => begun;
}

test("a new user is proposed for the place that was chosen, though the list still shows the one before", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("tree").getByText("Company").dblclick();
    await page.getByText("Everyone / Company").waitFor();
    const held = await hold(page, /\/users\?.*in=group/);
    await page.getByRole("tree").getByText("Sales").click();
    const answer = await held();
    await page.getByRole("button", { name: "New user" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByLabel("Login").fill("zoe");
    await dialog.getByRole("button", { name: "Create" }).click();
    await dialog.waitFor({ state: "detached" });
    await answer();
    await page.getByText("1 person", { exact: true }).waitFor();
    assert.ok(shared.server.qvadmin("member", "list", "/Company/Sales").includes("zoe"));
    await finish();
});

test("rows of a list come into no other one", async () => {
    const { page, finish } = await openPage(shared);
    const grid = page.getByRole("grid");
    await grid.getByText("Person 1", { exact: true }).waitFor();
    const held = await hold(page, /\/users\?.*offset=400/);
    await grid.focus();
    await page.keyboard.press("End");
    const answer = await held();
    await page.keyboard.press("Home");
    await page.getByRole("columnheader", { name: "Login" }).getByRole("button").click();
    await grid.getByText("Person 500", { exact: true }).waitFor();
    await grid.focus();
    await page.keyboard.press("End");
    await grid.getByText("Person 1", { exact: true }).waitFor();
    await answer();
    assert.equal(await grid.getByText("Person 500", { exact: true }).count(), 0);
    assert.equal(await grid.getByText("Person 1", { exact: true }).count(), 1);
    await finish();
});

test("why somebody may is told of what was asked last", async () => {
    const { page, finish } = await openPage(shared, { path: "/why" });
    const ask = async name => {
        await page.getByLabel("User").fill("user1");
        await page.getByLabel("Genre").fill("mail");
        await page.getByLabel("Function").fill(name);
        await page.getByRole("button", { name: "Explain" }).click();
    };
    const held = await hold(page, "**/api/v1/commands/right/explain");
    await ask("send");
    const answer = await held();
    await ask("size");
    await page.locator(".verdict").waitFor();
    const said = await page.locator(".page [role=status]").textContent();
    await answer();
    assert.equal(await page.locator(".page [role=status]").textContent(), said);
    await finish();
});

test("a role's rights are shown when they are there", async () => {
    const { page, finish } = await openPage(shared, { path: "/rights" });
    const cell = role => page.getByLabel(`${role}: mail size`, { exact: true });
    await cell("Authors").waitFor();
    await page.getByRole("checkbox", { name: "Editors" }).uncheck();
    await until(async () => (await cell("Editors").count()) === 0);
    const held = await hold(page, "**/api/v1/commands/right/matrix");
    await page.getByRole("checkbox", { name: "Editors" }).check();
    const answer = await held();
    assert.equal(await cell("Editors").count(), 0);
    await answer();
    assert.equal(await cell("Editors").inputValue(), "4");
    await finish();
});
