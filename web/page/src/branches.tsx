// A tree: children are read when a line is opened, and only the lines in sight are in the document.
import type { ComponentChildren } from "preact";
import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Step } from "./api";
import { Trouble, sentence } from "./dialogs";
import { Icon } from "./icons";
import { useChanges } from "./place";
import { Scroller, steps } from "./scroller";
import { number } from "./texts";

const kPage = 200;
const kLine = 26;

export interface Branch extends Step {
    children: number;
}

export interface Line<T extends Branch> {
    /** The way down to it, which is there once although an item may hang in several places. */
    way: string;
    /** Undefined until it is read. */
    node: T | undefined;
    /** The key of what it is shown under; empty at the top. */
    parent: string;
    index: number;
    depth: number;
    count: number;
}

interface Children<T> {
    total: number;
    rows: (T | undefined)[];
    asked: Set<number>;
}

interface Tree<T extends Branch> {
    id: string;
    label: string;
    /** The key of what is chosen, and the way to it where that is known. */
    chosen: string;
    trail: Step[] | undefined;
    /** Up to 200 children of a key, or of the top, from an offset on. */
    read: (parent: string, offset: number) => Promise<{ total: number; rows: T[] }>;
    icon: (node: T) => string;
    /** What is counted at the end of a line; 0 is left out. */
    count: (node: T) => number;
    onChoose: (node: T) => void;
    /** Takes a key before the tree does. @return whether it meant something. */
    onKey?: (event: KeyboardEvent, line: Line<T>) => boolean;
    /** Opens a menu on a line, which has been chosen, or beside all lines. */
    onContext?: (event: MouseEvent, line: Line<T> | undefined) => void;
    /** How what a line shows is carried to another line. */
    carrying: Carrying<T>;
}

/** With the pointer, or with Ctrl+X and Ctrl+V. */
interface Carrying<T extends Branch> {
    isMovable: (line: Line<T>) => boolean;
    /** Takes what a line shows along, or nothing any more. */
    carry: (line: Line<T> | undefined) => void;
    /** Says that it was taken along. */
    cut: (line: Line<T>) => void;
    canDrop: (node: T | undefined) => boolean;
    /** Asks, and puts it there. @param isCopy  it stays where it was, too. */
    drop: (node: T, isCopy: boolean) => void;
}

const last = (way: string) => way.slice(way.lastIndexOf("/") + 1);
const above = (way: string) => way.slice(0, Math.max(0, way.lastIndexOf("/")));

/** Left and right as a reader of the page's direction means them. */
export function directedKey(key: string): string {
    const isMirrored = getComputedStyle(document.documentElement).direction === "rtl";
    return isMirrored ? ({ ArrowLeft: "ArrowRight", ArrowRight: "ArrowLeft" }[key] ?? key) : key;
}

/** @return the line that is chosen, how many there are at the top (-1: not known yet), and the tree. */
export function useTree<T extends Branch>(tree: Tree<T>): {
    chosen: Line<T> | undefined;
    top: number;
    open: (line: Line<T>) => void;
    /** The id of the line that keys act on. */
    activeId: string;
    view: ComponentChildren;
} {
    const changes = useChanges();
    const children = useRef(new Map<string, Children<T>>());
    const [open, setOpen] = useState<ReadonlySet<string>>(new Set());
    const [active, setActive] = useState("");
    /** The line that something is dragged over. */
    const [over, setOver] = useState("");
    const [version, setVersion] = useState(0);
    const [trouble, setTrouble] = useState("");
    const typed = useRef({ text: "", at: 0 });

    const load = async (parent: string, offset: number) => {
        const known = children.current.get(parent);
        if (known?.asked.has(offset)) {
            return;
        }
        const kept = known ?? { total: -1, rows: [], asked: new Set<number>() };
        kept.asked.add(offset);
        children.current.set(parent, kept);
        try {
            const page = await tree.read(parent, offset);
            kept.total = page.total;
            page.rows.forEach((row, i) => {
                kept.rows[offset + i] = row;
            });
            setTrouble("");
            // What keys act on may have been a line whose name was not known yet.
            setActive(before => {
                const [, over, index] = before.match(/^(?:(.*)\/)?\?(\d+)$/) ?? [];
                const key = index !== undefined && last(over ?? "") === parent ? kept.rows[Number(index)]?.key : undefined;
                return key ? (over ? `${over}/${key}` : key) : before;
            });
        } catch (error) {
            kept.asked.delete(offset);
            setTrouble(sentence(error));
        }
        setVersion(before => before + 1);
    };

    const seen = useRef(-1);
    // An answer that is there already is shown with the first look at the page.
    useLayoutEffect(() => {
        if (seen.current !== changes) {
            seen.current = changes;
            // What is known stays until it has come anew, so that keys find it meanwhile.
            children.current.forEach(kept => kept.asked.clear());
        }
        void load("", 0);
        for (const way of open) {
            void load(last(way), 0);
        }
    }, [open, changes]);

    /** The key of what was shown last as chosen. */
    const shown = useRef<string>();
    // What is chosen is shown: its parents are opened.
    useEffect(() => {
        if (!tree.trail) {
            return;
        }
        const ways = tree.trail.map((_, i) => tree.trail!.slice(0, i + 1).map(step => step.key).join("/"));
        const way = ways[ways.length - 1] ?? "";
        const isElsewhere = shown.current === last(way);
        shown.current = last(way);
        setOpen(before => new Set([...before, ...ways.slice(0, -1)]));
        // Where what is chosen has only moved, keys may have led to another line meanwhile.
        setActive(before => (isElsewhere && last(before) !== last(way) ? before : way));
    }, [tree.trail?.map(step => step.key).join("/")]);

    const lines: Line<T>[] = [];
    const add = (parent: string, way: string, depth: number) => {
        const known = children.current.get(parent);
        for (let i = 0; known && i < known.total; ++i) {
            const node = known.rows[i];
            const own = (way ? `${way}/` : "") + (node?.key ?? `?${i}`);
            lines.push({ way: own, node, parent, index: i, depth, count: known.total });
            const isCycle = node !== undefined && way.split("/").includes(node.key);
            if (node && !isCycle && open.has(own)) {
                add(node.key, own, depth + 1);
            }
        }
    };
    add("", "", 1);
    const activeIndex = Math.max(
        0,
        lines.findIndex(line => line.way === active),
    );
    void version;

    const isChosen = (line: Line<T>) => line.node !== undefined && line.node.key === tree.chosen;
    const isCycle = (line: Line<T>) => line.node !== undefined && above(line.way).split("/").includes(line.node.key);
    const canOpen = (line: Line<T>) => (line.node?.children ?? 0) > 0 && !isCycle(line);
    const setLine = (line: Line<T>, isOpen: boolean) => {
        setOpen(before => {
            const after = new Set(before);
            isOpen ? after.add(line.way) : after.delete(line.way);
            return after;
        });
    };
    const choose = (line: Line<T>) => {
        setActive(line.way);
        line.node && tree.onChoose(line.node);
    };

    /** @return whether a key takes something along, or puts it there. */
    const carriedByKey = (event: KeyboardEvent, line: Line<T>) => {
        const { carrying } = tree;
        if (event.altKey || !line.node) {
            return false;
        }
        if (event.key === "x" && carrying.isMovable(line)) {
            carrying.carry(line);
            carrying.cut(line);
            return true;
        }
        if (event.key === "v" && carrying.canDrop(line.node)) {
            carrying.drop(line.node, false);
            return true;
        }
        return false;
    };
    const onKey = (event: KeyboardEvent, page: number) => {
        const line = lines[activeIndex];
        if (!line) {
            return;
        }
        if (tree.onKey?.(event, line)) {
            event.preventDefault();
            return;
        }
        if (event.ctrlKey || event.altKey || event.metaKey) {
            typed.current.text = "";
            if (carriedByKey(event, line)) {
                event.preventDefault();
            }
            return;
        }
        const key = directedKey(event.key);
        const move = (to: number) => setActive(lines[to]?.way ?? "");
        const actions: Record<string, () => void> = {
            ...steps(activeIndex, lines.length, page, move),
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
                    move(lines.findIndex(other => other.way === above(line.way)));
                }
            },
            Enter: () => choose(line),
        };
        const action = actions[key];
        if (action) {
            event.preventDefault();
            typed.current.text = "";
            action();
        } else if (key.length === 1 && !" /?".includes(key)) {
            event.preventDefault();
            event.stopPropagation();
            const now = Date.now();
            typed.current = { text: (now - typed.current.at < 800 ? typed.current.text : "") + key.toLowerCase(), at: now };
            for (let i = 1; i <= lines.length; ++i) {
                const other = lines[(activeIndex + i) % lines.length];
                if (other?.node?.name.toLowerCase().startsWith(typed.current.text)) {
                    setActive(other.way);
                    break;
                }
            }
        }
    };

    const drawn = (line: Line<T>, index: number, style: { top: string }) => {
        const { node } = line;
        const { carrying } = tree;
        return (
            <div
                key={line.way}
                id={`${tree.id}-${index}`}
                class={`branch${index === activeIndex ? " active" : ""}${line.way === over ? " over" : ""}`}
                role="treeitem"
                aria-level={line.depth}
                aria-setsize={line.count}
                aria-posinset={line.index + 1}
                aria-selected={isChosen(line)}
                {...(canOpen(line) ? { "aria-expanded": open.has(line.way) } : {})}
                style={{ ...style, "--depth": line.depth }}
                onClick={() => choose(line)}
                onDblClick={() => canOpen(line) && setLine(line, !open.has(line.way))}
                draggable={carrying.isMovable(line)}
                onDragStart={event => {
                    event.dataTransfer?.setData("text/plain", node?.name ?? "");
                    carrying.carry(line);
                }}
                onDragEnd={() => carrying.carry(undefined)}
                onDragOver={event => {
                    if (carrying.canDrop(node)) {
                        event.preventDefault();
                        setOver(line.way);
                    }
                }}
                onDragLeave={() => setOver(before => (before === line.way ? "" : before))}
                onDrop={event => {
                    event.preventDefault();
                    setOver("");
                    node && carrying.drop(node, event.ctrlKey);
                }}
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
                <Icon name={node ? tree.icon(node) : "folder"} />
                <span class="name" title={node?.name}>
                    <bdi>{node?.name ?? "…"}</bdi>
                    {isCycle(line) ? " ↺" : ""}
                </span>
                <span class="count">{node && tree.count(node) > 0 ? number(tree.count(node)) : ""}</span>
            </div>
        );
    };
    const view = (
        <>
            <Trouble text={trouble} />
            {lines.length > 0 && (
                <Scroller
                    role="tree"
                    id={tree.id}
                    label={tree.label}
                    count={lines.length}
                    lineHeight={kLine}
                    active={activeIndex}
                    activeId={`${tree.id}-${activeIndex}`}
                    onKey={onKey}
                    onContextMenu={event => {
                        const row = (event.target as Element).closest("[role=treeitem]");
                        // A key asks for that of the line that keys act on.
                        const index = row ? Number(row.id.slice(tree.id.length + 1)) : event.button === 2 ? -1 : activeIndex;
                        const line = lines[index];
                        line && !isChosen(line) && choose(line);
                        tree.onContext?.(event, line);
                    }}
                    onRest={(first, end) => {
                        for (let i = first; i <= end; ++i) {
                            const line = lines[i];
                            if (line && !line.node) {
                                void load(line.parent, Math.floor(line.index / kPage) * kPage);
                            }
                        }
                    }}
                    line={(index, style) => drawn(lines[index] as Line<T>, index, style)}
                />
            )}
        </>
    );
    return {
        // What is shown in several places is where it was chosen.
        chosen: lines.find(line => isChosen(line) && line.way === active) ?? lines.find(isChosen),
        top: children.current.get("")?.total ?? -1,
        open: line => setLine(line, true),
        activeId: `${tree.id}-${activeIndex}`,
        view,
    };
}

/** The key of what a line is shown under on its way; empty at the top. */
export const parentOf = (line: Line<Branch>) => last(above(line.way));
