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

test("the list does not wait until it is known who is signed in, and what needs that waits", async () => {
    const { page, finish } = await openPage(shared);
    let answer;
    const asked = [];
    page.on("request", request => asked.push(new URL(request.url()).pathname));
    await page.route("**/api/v1/session", async route => {
        await new Promise(resolve => (answer = resolve));
        await route.continue();
    });
    await page.goto(`${shared.server.url}/directory?user=1`);
    await page.getByRole("grid").getByText("Amy Pond").waitFor();
    assert.equal(await page.locator("details.user").count(), 0);
    answer();
    await page.locator("details.user").waitFor();
    assert.equal(await page.getByLabel("Title", { exact: true }).inputValue(), "Lead");
    for (const path of ["/api/v1/session", "/api/v1/commands", "/api/v1/users", "/api/v1/tree"]) {
        assert.equal(asked.filter(one => one === path).length, 1, path);
    }
    await finish();
});

test("a session that ends while the page comes leads to signing in, and to nothing else", async () => {
    const { page, finish } = await openPage(shared);
    const refusal = { status: 401, contentType: "application/problem+json", body: JSON.stringify({ code: "not_signed_in", detail: "sign in first" }) };
    await page.route("**/api/v1/**", route => route.fulfill(refusal));
    await page.goto(`${shared.server.url}/directory`);
    await page.getByLabel("Password").waitFor();
    await page.waitForTimeout(200);
    assert.equal(await page.getByRole("dialog").count(), 0);
    assert.equal(await page.getByText("sign in first").count(), 0);
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
