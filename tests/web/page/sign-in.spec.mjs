import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, password, useServer } from "./support.mjs";

const shared = useServer(["user create amy --name 'Amy Pond'"]);

test("a wrong password is refused, and the right one opens the directory", async () => {
    const { page, finish } = await openPage(shared, { signedIn: false });
    await page.getByLabel("Login name").fill("Admin");
    await page.getByLabel("Password").fill("wrong");
    await page.getByRole("button", { name: "Sign in" }).click();
    await page.getByRole("alert").getByText("the login name or the password is wrong").waitFor();
    await checkAccess(page);
    await page.getByLabel("Password").fill(password);
    await page.keyboard.press("Enter");
    await page.getByRole("grid").getByText("Amy Pond").waitFor();
    await checkAccess(page);
    await finish();
});

test("signing out ends the session", async () => {
    const { page, finish } = await openPage(shared);
    await page.locator("details.user > summary").click();
    await page.getByRole("button", { name: "Sign out" }).click();
    await page.getByLabel("Password").waitFor();
    await page.goto(`${shared.server.url}/audit`);
    await page.getByLabel("Password").waitFor();
    await finish();
});

test("when the session is over, somebody signs in over the page and what was entered stays", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1" });
    await page.getByLabel("Title", { exact: true }).fill("Lead");
    await page.context().clearCookies();
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByRole("dialog").getByLabel("Password").fill(password);
    await checkAccess(page);
    await page.getByRole("dialog").getByRole("button", { name: "Sign in" }).click();
    await page.getByText("changed amy (id 1)").waitFor();
    assert.equal(shared.server.json("user", "show", "amy").title, "Lead");
    await finish();
});

test("nothing of people is kept by the browser", async () => {
    const { page, finish } = await openPage(shared);
    await page.getByRole("grid").getByText("Amy Pond").waitFor();
    const state = await page.context().storageState();
    assert.deepEqual(state.origins, []);
    assert.deepEqual(
        state.cookies.map(cookie => [cookie.name, cookie.httpOnly, cookie.sameSite]),
        [["qv", true, "Strict"]],
    );
    await finish();
});
