// Views and groups.
import { useEffect, useRef, useState } from "preact/hooks";
import { type Place, type Step, findPlaces, listPlaces, may } from "./api";
import { Trouble, askFor, change, changeOrSay, sentence } from "./dialogs";
import { Icon } from "./icons";
import { canDrop, carry, cut, drop } from "./people";
import { argumentOf, suggestGroups } from "./pickers";
import { useChanges } from "./place";
import { Scroller } from "./scroller";
import { number, t } from "./texts";

const kPage = 200;
const kLine = 26;

interface Line {
    /** The way down to it, which is there once although a group may hang in several places. */
    way: string;
    place: Place | undefined;
    parent: string;
    index: number;
    depth: number;
    count: number;
}

interface Children {
    total: number;
    rows: (Place | undefined)[];
    asked: Set<number>;
}

const last = (way: string) => way.slice(way.lastIndexOf("/") + 1);
export function Tree(props: { chosen: string; trail: Step[] | undefined; path: string | undefined; onChoose: (key: string) => void }) {
    const changes = useChanges();
    const children = useRef(new Map<string, Children>());
    const [open, setOpen] = useState<ReadonlySet<string>>(new Set());
    const [active, setActive] = useState("");
    const [version, setVersion] = useState(0);
    const [trouble, setTrouble] = useState("");
    const [nowhere, setNowhere] = useState(0);
    const typed = useRef({ text: "", at: 0 });
    const [filter, setFilter] = useState("");
    /** The line that something is dragged over. */
    const [over, setOver] = useState("");
    const [found, setFound] = useState<(Step & { path: string })[]>([]);

    const load = async (parent: string, offset: number) => {
        const known = children.current.get(parent);
        if (known?.asked.has(offset)) {
            return;
        }
        const kept = known ?? { total: -1, rows: [], asked: new Set<number>() };
        kept.asked.add(offset);
        children.current.set(parent, kept);
        try {
            const page = await listPlaces(parent, offset);
            kept.total = page.total;
            page.rows.forEach((row, i) => {
                kept.rows[offset + i] = row;
            });
            if (page.nowhere !== undefined) {
                setNowhere(page.nowhere);
            }
            setTrouble("");
            // What keys act on may have been a line whose name was not known yet.
            setActive(before => {
                const [, above, index] = before.match(/^(?:(.*)\/)?\?(\d+)$/) ?? [];
                const key = index !== undefined && last(above ?? "") === parent ? kept.rows[Number(index)]?.key : undefined;
                return key ? (above ? `${above}/${key}` : key) : before;
            });
        } catch (error) {
            kept.asked.delete(offset);
            setTrouble(sentence(error));
        }
        setVersion(before => before + 1);
    };

    const seen = useRef(-1);
    useEffect(() => {
        if (seen.current !== changes) {
            seen.current = changes;
            children.current = new Map();
        }
        void load("", 0);
        for (const way of open) {
            void load(last(way), 0);
        }
    }, [open, changes]);

    // What is chosen is shown: its parents are opened.
    useEffect(() => {
        if (!props.trail) {
            return;
        }
        const ways = props.trail.map((_, i) => props.trail!.slice(0, i + 1).map(step => step.key).join("/"));
        setOpen(before => new Set([...before, ...ways.slice(0, -1)]));
        setActive(ways[ways.length - 1] ?? "");
    }, [props.trail?.map(step => step.key).join("/")]);

    const lines: Line[] = [];
    const add = (parent: string, way: string, depth: number) => {
        const known = children.current.get(parent);
        for (let i = 0; known && i < known.total; ++i) {
            const place = known.rows[i];
            const own = (way ? `${way}/` : "") + (place?.key ?? `?${i}`);
            lines.push({ way: own, place, parent, index: i, depth, count: known.total });
            const isCycle = place !== undefined && way.split("/").includes(place.key);
            if (place && !isCycle && open.has(own)) {
                add(place.key, own, depth + 1);
            }
        }
    };
    add("", "", 1);
    if (nowhere > 0) {
        const total = children.current.get("")?.total ?? 0;
        lines.push({
            way: "nowhere",
            place: { key: "nowhere", name: t("nowhere"), people: 0, children: nowhere, places: 1 },
            parent: "",
            index: total,
            depth: 1,
            count: total + 1,
        });
        if (open.has("nowhere")) {
            add("nowhere", "nowhere", 2);
        }
    }
    const activeIndex = Math.max(
        0,
        lines.findIndex(line => line.way === active),
    );
    const chosenLine = lines.find(line => line.place?.key === props.chosen);
    void version;

    const isCycle = (line: Line) =>
        line.place !== undefined && line.way.split("/").slice(0, -1).includes(line.place.key);
    const canOpen = (line: Line) => (line.place?.children ?? 0) > 0 && !isCycle(line);
    const setLine = (line: Line, isOpen: boolean) => {
        setOpen(before => {
            const after = new Set(before);
            isOpen ? after.add(line.way) : after.delete(line.way);
            return after;
        });
    };
    const parentOf = (line: Line) => last(line.way.slice(0, Math.max(0, line.way.lastIndexOf("/"))));
    const choose = (line: Line) => {
        setActive(line.way);
        if (line.place && line.place.key !== "nowhere") {
            props.onChoose(line.place.key);
        }
    };

    const onKey = (event: KeyboardEvent, page: number) => {
        const line = lines[activeIndex];
        if (line?.place && (event.ctrlKey || event.metaKey)) {
            if (event.key === "x" && line.place.key.startsWith("group:")) {
                event.preventDefault();
                cut({ group: line.place, from: parentOf(line) });
            } else if (event.key === "v" && canDrop(line.place)) {
                event.preventDefault();
                drop(line.place, false);
            }
        }
        if (!line || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        const isMirrored = getComputedStyle(document.documentElement).direction === "rtl";
        const key = isMirrored
            ? ({ ArrowLeft: "ArrowRight", ArrowRight: "ArrowLeft" }[event.key] ?? event.key)
            : event.key;
        const move = (to: number) => setActive(lines[Math.min(lines.length - 1, Math.max(0, to))]?.way ?? "");
        const actions: Record<string, () => void> = {
            ArrowDown: () => move(activeIndex + 1),
            ArrowUp: () => move(activeIndex - 1),
            Home: () => move(0),
            End: () => move(lines.length - 1),
            PageDown: () => move(activeIndex + page),
            PageUp: () => move(activeIndex - page),
            ArrowRight: () => {
                if (open.has(line.way)) {
                    // Its children may be on their way still.
                    move(activeIndex + ((lines[activeIndex + 1]?.depth ?? 0) > line.depth ? 1 : 0));
                } else if (canOpen(line)) {
                    setLine(line, true);
                }
            },
            ArrowLeft: () => {
                if (open.has(line.way)) {
                    setLine(line, false);
                } else if (line.depth > 1) {
                    move(lines.findIndex(other => other.way === line.way.slice(0, line.way.lastIndexOf("/"))));
                }
            },
            Enter: () => choose(line),
            F2: () => may("group/rename") && rename(line),
            Delete: () => may("group/delete") && void remove(line),
        };
        const action = actions[key];
        if (action) {
            event.preventDefault();
            action();
        } else if (key.length === 1 && key !== " " && key !== "/") {
            event.preventDefault();
            event.stopPropagation();
            const now = Date.now();
            typed.current = { text: (now - typed.current.at < 800 ? typed.current.text : "") + key.toLowerCase(), at: now };
            for (let i = 1; i <= lines.length; ++i) {
                const other = lines[(activeIndex + i) % lines.length];
                if (other?.place?.name.toLowerCase().startsWith(typed.current.text)) {
                    setActive(other.way);
                    break;
                }
            }
        }
    };

    const create = () =>
        askFor(
            props.path ? t("group.under", { path: props.path }) : t("tree.newview"),
            [{ name: "name", label: t("group.name"), required: true }],
            t("create"),
            async values => {
                const name = values["name"] ?? "";
                const made = chosenLine?.place
                    ? await change("group/create", {
                          PATH: `${argumentOf(props.chosen)}/${name.replace(/[\\/]/g, "\\$&")}`,
                      })
                    : await change("view/create", { NAME: name });
                if (chosenLine) {
                    setOpen(before => new Set([...before, chosenLine.way]));
                }
                return made !== null;
            },
        );
    const noun = (key: string) => (key.startsWith("view:") ? "view" : "group");
    const rename = (line: Line | undefined) => {
        if (!line?.place || line.place.key === "nowhere") {
            return;
        }
        const { key, name } = line.place;
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
    const move = (line: Line | undefined) => {
        const place = line?.place;
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
    const remove = async (line: Line | undefined) => {
        const key = line?.place?.key;
        if (!key || key === "nowhere") {
            return;
        }
        const isView = noun(key) === "view";
        const done = await changeOrSay(
            `${noun(key)}/delete`,
            isView
                ? { VIEW: argumentOf(key) }
                : { GROUP: argumentOf(key), ...((line.place?.children ?? 0) > 0 ? { recursive: true } : {}) },
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

    const target = chosenLine;
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
                            <button disabled={!target?.place?.key.startsWith("group:")} onClick={() => move(target)}>
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
            ) : lines.length === 0 ? (
                <p class="empty">{t(children.current.get("")?.total === 0 ? "organisation.empty" : "loading")}</p>
            ) : (
                <Scroller
                    role="tree"
                    id="tree"
                    label={t("organisation")}
                    count={lines.length}
                    lineHeight={kLine}
                    active={activeIndex}
                    activeId={`tree-${activeIndex}`}
                    onKey={onKey}
                    onRest={(first, end) => {
                        for (let i = first; i <= end; ++i) {
                            const line = lines[i];
                            if (line && !line.place) {
                                void load(line.parent, Math.floor(line.index / kPage) * kPage);
                            }
                        }
                    }}
                    line={(index, style) => {
                        const line = lines[index] as Line;
                        const place = line.place;
                        return (
                            <div
                                key={line.way}
                                id={`tree-${index}`}
                                class={`branch${index === activeIndex ? " active" : ""}${line.way === over ? " over" : ""}`}
                                role="treeitem"
                                aria-level={line.depth}
                                aria-setsize={line.count}
                                aria-posinset={line.index + 1}
                                aria-selected={place !== undefined && place.key === props.chosen}
                                {...(canOpen(line) ? { "aria-expanded": open.has(line.way) } : {})}
                                style={{ ...style, "--depth": line.depth }}
                                draggable={place?.key.startsWith("group:")}
                                onDragStart={event => {
                                    event.dataTransfer?.setData("text/plain", place?.name ?? "");
                                    place && carry({ group: place, from: parentOf(line) });
                                }}
                                onDragEnd={() => carry(undefined)}
                                onDragOver={event => {
                                    if (canDrop(place)) {
                                        event.preventDefault();
                                        setOver(line.way);
                                    }
                                }}
                                onDragLeave={() => setOver(before => (before === line.way ? "" : before))}
                                onDrop={event => {
                                    event.preventDefault();
                                    setOver("");
                                    place && drop(place, event.ctrlKey);
                                }}
                                onClick={() => choose(line)}
                                onDblClick={() => canOpen(line) && setLine(line, !open.has(line.way))}
                            >
                                <span
                                    class={`twist${canOpen(line) ? "" : " leaf"}${open.has(line.way) ? " open" : ""}`}
                                    onClick={event => {
                                        event.stopPropagation();
                                        if (canOpen(line)) {
                                            setLine(line, !open.has(line.way));
                                        }
                                    }}
                                >
                                    {canOpen(line) ? <Icon name="twist" /> : null}
                                </span>
                                <Icon name={place?.key.startsWith("view:") ? "view" : "folder"} />
                                <span class="name" dir="auto" title={place?.name}>
                                    {place?.name ?? "…"}
                                    {isCycle(line) ? " ↺" : ""}
                                </span>
                                <span class="count">{place && place.people > 0 ? number(place.people) : ""}</span>
                            </div>
                        );
                    }}
                />
            )}
        </section>
    );
}
