// Views and groups.
import { useState } from "preact/hooks";
import { type Place, type Step, findPlaces, listPlaces, may } from "./api";
import { type Line, parentOf, useTree } from "./branches";
import { Trouble, askFor, change, changeOrSay, sentence } from "./dialogs";
import { Icon } from "./icons";
import { canDrop, carry, drop, sayCut } from "./people";
import { argumentOf, suggestGroups } from "./pickers";
import { t } from "./texts";

/** Views, or what hangs under a place; the last of the views is the place of what hangs nowhere. */
async function read(parent: string, offset: number): Promise<{ total: number; rows: Place[] }> {
    const { total, rows, nowhere = 0 } = await listPlaces(parent, offset);
    if (nowhere === 0) {
        return { total, rows };
    }
    const isEnd = offset + rows.length === total;
    const place = { key: "nowhere", name: t("nowhere"), people: 0, children: nowhere, places: 1 };
    return { total: total + 1, rows: isEnd ? [...rows, place] : rows };
}

export function Tree(props: { chosen: string; trail: Step[] | undefined; path: string | undefined; onChoose: (key: string) => void }) {
    const [trouble, setTrouble] = useState("");
    const [filter, setFilter] = useState("");
    const [found, setFound] = useState<(Step & { path: string })[]>([]);
    const tree = useTree<Place>({
        id: "tree",
        label: t("organisation"),
        chosen: props.chosen,
        trail: props.trail,
        read,
        icon: place => (place.key.startsWith("view:") ? "view" : "folder"),
        count: place => place.people,
        onChoose: place => place.key !== "nowhere" && props.onChoose(place.key),
        onKey: (event, line) => {
            if (event.key === "F2" && may("group/rename")) {
                rename(line);
            } else if (event.key === "Delete" && may("group/delete")) {
                void remove(line);
            } else {
                return false;
            }
            return true;
        },
        carrying: {
            isMovable: line => line.node?.key.startsWith("group:") ?? false,
            carry: line => carry(line?.node && { group: line.node, from: parentOf(line) }),
            cut: line => sayCut(line.node?.name ?? ""),
            canDrop,
            drop,
        },
    });

    const create = () =>
        askFor(
            props.path ? t("group.under", { path: props.path }) : t("tree.newview"),
            [{ name: "name", label: t("group.name"), required: true }],
            t("create"),
            async values => {
                const name = values["name"] ?? "";
                const made = tree.chosen
                    ? await change("group/create", {
                          PATH: `${argumentOf(props.chosen)}/${name.replace(/[\\/]/g, "\\$&")}`,
                      })
                    : await change("view/create", { NAME: name });
                if (tree.chosen) {
                    tree.open(tree.chosen);
                }
                return made !== null;
            },
        );
    const noun = (key: string) => (key.startsWith("view:") ? "view" : "group");
    const rename = (line: Line<Place> | undefined) => {
        if (!line?.node || line.node.key === "nowhere") {
            return;
        }
        const { key, name } = line.node;
        askFor(
            t("group.rename", { path: name }),
            [{ name: "name", label: t("group.name"), value: name, required: true }],
            t("rename"),
            async values =>
                (await change(`${noun(key)}/rename`, {
                    [noun(key) === "view" ? "VIEW" : "GROUP"]: argumentOf(key),
                    NAME: values["name"] ?? "",
                })) !== null,
        );
    };
    const move = (line: Line<Place> | undefined) => {
        const place = line?.node;
        if (!line || !place?.key.startsWith("group:")) {
            return;
        }
        const parent = parentOf(line);
        askFor(
            t("group.move", { path: place.name }),
            [{ name: "to", label: t("group.newparent"), required: true, suggest: suggestGroups }],
            t("move"),
            async values =>
                (await change("group/move", {
                    GROUP: argumentOf(place.key),
                    PARENT: values["to"] ?? "",
                    ...(place.places > 1 && /^(view|group):/.test(parent) ? { from: argumentOf(parent) } : {}),
                })) !== null,
        );
    };
    const remove = async (line: Line<Place> | undefined) => {
        const key = line?.node?.key;
        if (!key || key === "nowhere") {
            return;
        }
        const isView = noun(key) === "view";
        const done = await changeOrSay(
            `${noun(key)}/delete`,
            isView
                ? { VIEW: argumentOf(key) }
                : { GROUP: argumentOf(key), ...((line.node?.children ?? 0) > 0 ? { recursive: true } : {}) },
        );
        if (done && key === props.chosen) {
            props.onChoose("");
        }
    };

    const search = async (text: string) => {
        setFilter(text);
        if (text.trim() === "") {
            setFound([]);
            return;
        }
        try {
            setFound((await findPlaces(text.trim())).rows);
        } catch (error) {
            setTrouble(sentence(error));
        }
    };

    const target = tree.chosen;
    return (
        <section class="tree panel" aria-label={t("organisation")}>
            <header>
                <h2>{t("organisation")}</h2>
                {may(target ? "group/create" : "view/create") && (
                    <button class="icon" title={t("tree.new")} aria-label={t(target ? "tree.new" : "tree.newview")} onClick={create}>
                        <Icon name="plus" />
                    </button>
                )}
                {may("group/rename") && (
                    <details class="menu">
                        <summary class="icon" aria-label={t("tree.menu")}>
                            <Icon name="more" />
                        </summary>
                        <div class="popup" onClick={event => event.currentTarget.closest("details")?.removeAttribute("open")}>
                            <button disabled={!target} onClick={() => rename(target)}>
                                {t("rename")} <kbd>F2</kbd>
                            </button>
                            <button disabled={!target?.node?.key.startsWith("group:")} onClick={() => move(target)}>
                                {t("move")}…
                            </button>
                            <button disabled={!target} class="danger" onClick={() => void remove(target)}>
                                {t("delete")}… <kbd>Del</kbd>
                            </button>
                        </div>
                    </details>
                )}
            </header>
            <input
                class="filter"
                type="search"
                aria-label={t("tree.filter")}
                placeholder={t("tree.filter")}
                value={filter}
                onInput={event => void search(event.currentTarget.value)}
            />
            <Trouble text={trouble} />
            {filter.trim() !== "" ? (
                <ul class="found">
                    {found.map(row => (
                        <li key={row.key}>
                            <button
                                class="link"
                                dir="auto"
                                onClick={() => {
                                    void search("");
                                    props.onChoose(row.key);
                                }}
                            >
                                {row.path}
                            </button>
                        </li>
                    ))}
                    {found.length === 0 && <li>{t("none")}</li>}
                </ul>
            ) : (
                <>
                    {tree.top <= 0 && <p class="empty">{t(tree.top === 0 ? "organisation.empty" : "loading")}</p>}
                    {tree.view}
                </>
            )}
        </section>
    );
}
