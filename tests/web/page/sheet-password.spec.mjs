import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "user create 'amelia.pond.jr' --name 'Amy Pond' --company 'Brightwater Ltd'",
    "user create boss --super",
]);
const isSet = login => shared.server.json("user", "password", "status", login).set;

async function enter(page, password) {
    const dialog = page.getByRole("dialog", { name: "New password" });
    await dialog.getByLabel("Password").fill(password);
    await dialog.getByRole("button", { name: "Save" }).click();
    return dialog;
}

test("a password that is typed is judged, and each refusal says why in one sentence", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1&tab=security" });
    await page.getByRole("button", { name: "New password…" }).click();
    let dialog = await enter(page, "eleven char");
    await dialog.getByText("the password needs at least 12 characters").waitFor();
    await checkAccess(page);
    await enter(page, "Amelia.Pond.JR");
    await dialog.getByText("the password is the login name, the name or the company of amelia.pond.jr").waitFor();
    await enter(page, "brightwater ltd");
    await dialog.getByText("the password is the login name, the name or the company of amelia.pond.jr").waitFor();
    await enter(page, "password1234");
    await dialog.getByText("the password is easy to guess").waitFor();
    assert.equal(isSet("amelia.pond.jr"), false);
    await enter(page, "twelve small");
    await until(() => isSet("amelia.pond.jr"));

    await page.goto(`${shared.server.url}/directory?user=2&tab=security`);
    await page.getByRole("button", { name: "New password…" }).click();
    dialog = await enter(page, "twelve small");
    await dialog.getByText("the password of a super user needs at least 15 characters").waitFor();
    await enter(page, "fifteen letters");
    await until(() => isSet("boss"));
    await finish();
});

test("the refusal is in the language of the reader", async () => {
    const { page, finish } = await openPage(shared, { signedIn: false, locale: "de-DE", path: "/directory?user=1&tab=security" });
    await page.getByLabel("Anmeldename").fill("Admin");
    await page.getByLabel("Kennwort").fill("correct horse battery");
    await page.keyboard.press("Enter");
    await page.getByRole("button", { name: "Kennwort zurücksetzen …" }).click();
    await page.getByRole("dialog").getByLabel("Kennwort").fill("zu kurz");
    await page.getByRole("dialog").locator("button.main").click();
    await page.getByText("das Kennwort braucht mindestens 12 Zeichen").waitFor();
    await checkAccess(page);
    await finish();
});
