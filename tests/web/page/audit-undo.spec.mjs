import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer(["user create amy --title Clerk", "user set amy --title Lead", "user set amy --title Boss"]);

test("a change is shown with every value before and after, and undone", async () => {
    const { page, finish } = await openPage(shared, { path: "/audit" });
    const row = page.getByRole("row", { name: "--title Boss" });
    await row.getByRole("button", { name: "Show" }).click();
    const entry = page.getByRole("region", { name: /^Change / });
    await entry.getByRole("cell", { name: "Lead" }).waitFor();
    await checkAccess(page);
    await entry.getByRole("button", { name: "Undo this change" }).click();
    await page.getByRole("dialog").getByText("1 changed row").waitFor();
    await page.getByRole("button", { name: "Go on" }).click();
    await until(() => shared.server.json("user", "show", "amy").title === "Lead");
    await row.getByText("undone by").waitFor();
    assert.equal(await entry.getByRole("button", { name: "Undo this change" }).count(), 0);
    await finish();
});

test("what is in the way of an undo is named, and nothing changes", async () => {
    shared.server.qvadmin("user", "set", "amy", "--title", "Chief");
    const { page, finish } = await openPage(shared, { path: "/audit?noun=user" });
    await page.getByRole("row", { name: "--title Lead" }).getByRole("button", { name: "Undo" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Go on" }).click();
    await page.getByRole("status").getByText(/Chief/).waitFor();
    assert.equal(shared.server.json("user", "show", "amy").title, "Chief");
    await finish();
});
