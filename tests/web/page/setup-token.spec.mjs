import { test } from "node:test";
import { checkAccess, openPage, password, useServer } from "./support.mjs";

const shared = useServer([], { withPassword: false });

test("the link that the server prints gives Admin a password, once", async () => {
    const { token } = shared.server;
    const { page, finish } = await openPage(shared, { path: `/setup#${token}`, signedIn: false });
    await page.getByLabel("Password", { exact: true }).fill(password);
    await page.getByLabel("Password, again").fill("something else");
    await page.getByRole("button", { name: "Set the password" }).click();
    await page.getByRole("alert").getByText("differ").waitFor();
    await checkAccess(page);
    await page.getByLabel("Password, again").fill(password);
    await page.getByRole("button", { name: "Set the password" }).click();
    await page.getByText("The password is set.").waitFor();
    await page.getByLabel("Password").fill(password);
    await page.getByRole("button", { name: "Sign in" }).click();
    await page.getByRole("grid").getByText("Admin").first().waitFor();
    await finish();

    const again = await openPage(shared, { path: `/setup#${token}`, signedIn: false });
    await again.page.getByLabel("Password", { exact: true }).fill("another long password");
    await again.page.getByLabel("Password, again").fill("another long password");
    await again.page.getByRole("button", { name: "Set the password" }).click();
    await again.page.getByRole("alert").getByText("no longer good").waitFor();
    await again.finish();
});
