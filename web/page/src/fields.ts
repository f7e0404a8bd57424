// Fields of users, as they are named here and as commands take them.
import type { Row } from "./api";
import { t, words } from "./texts";

export const fieldLabel = (name: string) =>
    name === "name" || name === "title" || name === "department" ? t(`column.${name}`) : words(name);

/** Fields with a department that is a path of a group, or else a text. */
export function departmentOf(fields: Row): Row {
    const { department, ...others } = fields;
    if (department === undefined) {
        return others;
    }
    return { ...others, [String(department).startsWith("/") ? "department" : "department_text"]: department };
}
