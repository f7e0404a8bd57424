// Names of places and roles, as they are suggested and as commands take them.
import { findPlaces, run } from "./api";

/** A view or group as commands take it. */
export const argumentOf = (key: string) => (key.startsWith("view:") ? key : key.replace("group:", "id:"));

export const suggestGroups = async (text: string) => (await findPlaces(text)).rows.map(row => row.path);

/** Suggests names of a list that is read from time to time. */
function namesOf(command: string): (text: string) => Promise<string[]> {
    let all: Promise<string[]> | undefined;
    return async text => {
        all ??= run(command, {}).then(answer => (answer.rows ?? []).map(row => String(row["name"])));
        const names = await all.finally(() => setTimeout(() => (all = undefined), 10000));
        return names.filter(name => name.toLowerCase().includes(text.toLowerCase()));
    };
}

export const suggestRoles = namesOf("role/list");
export const suggestPlans = namesOf("plan/list");
