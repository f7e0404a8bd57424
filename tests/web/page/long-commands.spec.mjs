import { test } from "node:test";
import { checkAccess, openPage, settled, useServer } from "./support.mjs";

const shared = useServer(["user create amy"]);

test("the directory is checked and mended, and messages are purged after a question", async () => {
    const { page, finish } = await openPage(shared, { path: "/more?noun=db" });
    await page.getByRole("button", { name: "Check", exact: true }).click();
    const dialog = page.getByRole("dialog", { name: "Database: Check" });
    await dialog.getByRole("button", { name: "Run" }).click();
    await dialog.getByRole("cell", { name: "1", exact: true }).waitFor();
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Close" }).click();

    await page.goto(`${shared.server.url}/overview`);
    await settled(page);
    await page.getByRole("button", { name: "Check the directory" }).click();
    await page.getByRole("button", { name: "Mend what can be mended…" }).click();
    await page.getByText("there is nothing that can be mended").first().waitFor();

    await page.goto(`${shared.server.url}/messages`);
    await settled(page);
    await page.getByRole("button", { name: "Purge" }).click();
    const purge = page.getByRole("dialog", { name: "Messages: Purge" });
    await purge.getByLabel("Keep days").fill("30");
    await purge.getByRole("button", { name: "Run" }).click();
    await page.getByText("there are no messages from before").first().waitFor();
    await finish();
});
