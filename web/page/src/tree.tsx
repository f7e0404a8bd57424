// Views and groups.
import { useEffect, useState } from "preact/hooks";
import { whileAsked } from "./answers";
import { type Place, type Step, findPlaces, listPlaces, may } from "./api";
import { type Line, parentOf, useTree } from "./branches";
import { Trouble, askFor, change, changeOrSay, sentence } from "./dialogs";
import { type Action, allowed, openContext } from "./context";
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
        onContext: (event, line) => {
            const row = (event.target as Element).closest("[role=treeitem]");
            void openContext(event, () => (line ? actionsOn(line) : [create(undefined)]), row ? null : line && document.getElementById(tree.activeId));
        },
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

    /** @param under  undefined for a view. @param path  of it, where that is known. */
    const create = (under: Line<Place> | undefined, path = under?.node?.name ?? ""): Action => ({
        command: under ? "group/create" : "view/create",
        label: t(under ? "tree.new" : "tree.newview"),
        act: () =>
            askFor(
                under ? t("group.under", { path }) : t("tree.newview"),
                [{ name: "name", label: t("group.name"), required: true }],
                t("create"),
                async values => {
                    const name = values["name"] ?? "";
                    const made = under?.node
                        ? await change("group/create", {
                              PATH: `${argumentOf(under.node.key)}/${name.replace(/[\\/]/g, "\\$&")}`,
                          })
                        : await change("view/create", { NAME: name });
                    if (under) {
                        tree.open(under);
                    }
                    return made !== null;
                },
            ),
    });
    const nounOf = (key: string) => (key.startsWith("view:") ? "view" : "group");
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
                (await change(`${nounOf(key)}/rename`, {
                    [nounOf(key) === "view" ? "VIEW" : "GROUP"]: argumentOf(key),
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
        const isView = nounOf(key) === "view";
        const done = await changeOrSay(
            `${nounOf(key)}/delete`,
            isView
                ? { VIEW: argumentOf(key) }
                : { GROUP: argumentOf(key), ...((line.node?.children ?? 0) > 0 ? { recursive: true } : {}) },
        );
        if (done && key === props.chosen) {
            props.onChoose("");
        }
    };

    const actionsOn = (line: Line<Place>): Action[] => {
        const { key = "nowhere" } = line.node ?? {};
        const noun = nounOf(key);
        return key === "nowhere"
            ? []
            : [
                  create(line),
                  { command: `${noun}/rename`, label: `${t("rename")}…`, keys: "F2", act: () => rename(line) },
                  ...(noun === "group" ? [{ command: "group/move", label: `${t("move")}…`, act: () => move(line) }] : []),
                  { command: `${noun}/delete`, label: `${t("delete")}…`, keys: "Del", isDanger: true, act: () => void remove(line) },
              ];
    };

    const wanted = filter.trim();
    useEffect(() => {
        if (wanted === "") {
            setFound([]);
            return;
        }
        return whileAsked(
            findPlaces(wanted),
            ({ rows }) => setFound(rows),
            error => setTrouble(sentence(error)),
        );
    }, [wanted]);

    const target = tree.chosen;
    const making = create(target, props.path);
    const others = allowed(target ? actionsOn(target).slice(1) : []);
    return (
        <section class="tree panel" aria-label={t("organisation")}>
            <header>
                <h2>{t("organisation")}</h2>
                {allowed([making]).map(({ label, act }) => (
                    <button key="new" class="icon" title={label} aria-label={label} onClick={act}>
                        <Icon name="plus" />
                    </button>
                ))}
                {others.length > 0 && (
                    <details class="menu">
                        <summary class="icon" aria-label={t("tree.menu")}>
                            <Icon name="more" />
                        </summary>
                        <div class="popup" onClick={event => event.currentTarget.closest("details")?.removeAttribute("open")}>
                            {others.map(({ label, keys, isDanger, act }) => (
                                <button key={label} class={isDanger ? "danger" : ""} onClick={act}>
                                    {label} {keys && <kbd>{keys}</kbd>}
                                </button>
                            ))}
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
                onInput={event => setFilter(event.currentTarget.value)}
            />
            <Trouble text={trouble} />
            {wanted !== "" ? (
                <ul class="found">
                    {found.map(row => (
                        <li key={row.key}>
                            <button
                                class="link"
                                dir="auto"
                                onClick={() => {
                                    setFilter("");
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
