import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer(["user create amy --name 'Amy Pond' --title Clerk --mobile 1"]);

test("what somebody else has changed meanwhile stands beside what is entered", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Title", { exact: true }).fill("Mine");
    await sheet.getByLabel("Company").fill("Brightwater");
    shared.server.qvadmin("user", "set", "amy", "--title", "Theirs", "--note", "Their note");
    await sheet.getByRole("button", { name: "Save" }).click();
    await sheet.getByRole("alert").getByText("Not saved.").waitFor();
    await sheet.getByText("Theirs: Theirs").waitFor();
    await checkAccess(page);
    assert.equal(await sheet.getByLabel("Title", { exact: true }).inputValue(), "Mine");
    // What only the others changed is taken over.
    assert.equal(await sheet.getByLabel("Note").inputValue(), "Their note");
    assert.equal(shared.server.json("user", "show", "amy").title, "Theirs");
    await sheet.getByRole("button", { name: "Save" }).click();
    await until(() => shared.server.json("user", "show", "amy").title === "Mine");
    const user = shared.server.json("user", "show", "amy");
    assert.deepEqual([user.note, user.company], ["Their note", "Brightwater"]);
    await finish();
});

test("theirs is taken", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    const sheet = page.getByRole("complementary", { name: "User" });
    await sheet.getByLabel("Title", { exact: true }).fill("Mine again");
    await sheet.getByLabel("Company").fill("Elsewhere");
    shared.server.qvadmin("user", "set", "amy", "--title", "Theirs again");
    await sheet.getByRole("button", { name: "Save" }).click();
    await sheet.getByRole("button", { name: "Take theirs" }).click();
    assert.equal(await sheet.getByLabel("Title", { exact: true }).inputValue(), "Theirs again");
    await sheet.getByRole("button", { name: "Save" }).click();
    await until(() => shared.server.json("user", "show", "amy").company === "Elsewhere");
    assert.equal(shared.server.json("user", "show", "amy").title, "Theirs again");
    await finish();
});

test("two windows at one user: the second to save is told", async () => {
    const one = await openPage(shared, { path: "/directory?user=1" });
    const other = await openPage(shared, { path: "/directory?user=1" });
    await one.page.getByLabel("Company").fill("One");
    await other.page.getByLabel("Company").fill("Other");
    await one.page.getByRole("button", { name: "Save" }).click();
    await one.page.getByText("changed amy").waitFor();
    await other.page.getByRole("button", { name: "Save" }).click();
    await other.page.getByText("Theirs: One").waitFor();
    assert.equal(shared.server.json("user", "show", "amy").company, "One");
    await one.finish();
    await other.finish();
});
