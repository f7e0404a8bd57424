// What the page says, in the language of its reader.
import { de } from "./de";
import { type Catalogue, type Key, en } from "./en";
import { language } from "./language";
import { zh } from "./zh-CN";

const catalogues: Record<string, Catalogue> = { en, de, "zh-CN": zh };

const catalogue = catalogues[language] ?? en;
/** Made when it is first used: each takes some of the time in which the page begins. */
function later<T>(make: () => T): () => T {
    let made: T | undefined;
    return () => (made ??= make());
}
const plurals = later(() => new Intl.PluralRules(language));
/** As people where the reader is write numbers and dates. */
const locale = navigator.languages.find(wanted => wanted.split("-")[0] === language.split("-")[0]) ?? language;
const numbers = later(() => new Intl.NumberFormat(locale));
const times = later(() => new Intl.DateTimeFormat(locale, { dateStyle: "medium", timeStyle: "medium" }));

/** The text of a key, with `{name}` replaced. */
export function t(key: Key, values: Record<string, string | number> = {}): string {
    return catalogue[key].replace(/\{(\w+)\}/g, (_, name: string) => {
        const value = values[name] ?? "";
        return typeof value === "number" ? numbers().format(value) : value;
    });
}

/** The text of a count: KEY.one, or KEY.other. */
export function counted(key: "changed.count" | "people.count", count: number): string {
    return t(plurals().select(count) === "one" ? `${key}.one` : `${key}.other`, { count });
}

export const number = (value: number) => numbers().format(value);
export const time = (value: string) => (Number.isNaN(Date.parse(value)) ? value : times().format(new Date(value)));

const nameOr = (key: string, otherwise: string) => (catalogue as Partial<Record<string, string>>)[key] ?? otherwise;

let names: Record<string, string> = {};
/** Has columns and parameters called as the server calls them in this language. */
export const setNames = (given: typeof names) => void (names = given);

/** A name of a column or parameter, for people. */
export const words = (name: string) => {
    const key = name.toLowerCase();
    const text = nameOr(`field.${key}`, names[key] ?? key.replaceAll("_", " "));
    return text.charAt(0).toUpperCase() + text.slice(1);
};
/** What the noun of a command is called; one that the page does not know by its word. */
export const nounName = (noun: string) => nameOr(`noun.${noun}`, words(noun));
/** What the rest of a command is called, such as "show"; one that the page does not know by its words. */
export const verbName = (path: string[]) => nameOr(`verb.${path.slice(1).join(" ")}`, words(path.slice(1).join(" ")));

/** What a command is called, such as "Roles: Show". */
export const commandName = (path: string[]) =>
    path.length > 1 ? `${nounName(path[0] ?? "")}: ${verbName(path)}` : nameOr(path[0] ?? "", words(path[0] ?? ""));

/** A sentence of the server, with commands and options called as they are here. */
export const retold = (sentence: string) =>
    sentence
        .replace(/`(?:qvadmin )?([a-z][a-z-]*(?: [a-z][a-z-]*)+)(?: --[^`]*)?`/g, (_, command: string) => `“${commandName(command.split(" "))}”`)
        .replace(/(?<![\w-])--([a-z]+(?:-[a-z]+)*)/g, (_, option: string) => `“${words(option.replaceAll("-", "_"))}”`);

export function setLanguage(wanted: string): void {
    localStorage.setItem("language", wanted);
    location.reload();
}
