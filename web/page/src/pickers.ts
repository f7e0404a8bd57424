// Names of places and roles, as they are suggested and as commands take them.
import { findPlaces, run } from "./api";

/** A view or group as commands take it. */
export const argumentOf = (key: string) => (key.startsWith("view:") ? key : key.replace("group:", "id:"));

export const suggestGroups = async (text: string) => (await findPlaces(text)).rows.map(row => row.path);

let roles: Promise<string[]> | undefined;
export const suggestRoles = async (text: string) => {
    roles ??= run("role/list", {}).then(answer => (answer.rows ?? []).map(row => String(row["name"])));
    const names = await roles.finally(() => setTimeout(() => (roles = undefined), 10000));
    return names.filter(name => name.toLowerCase().includes(text.toLowerCase()));
};
