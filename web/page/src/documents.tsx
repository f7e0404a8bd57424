// Document roots with their tree of folders; what is chosen is shown beside it.
import type { ComponentChildren } from "preact";
import { useEffect, useState } from "preact/hooks";
import { type Answer, type Command, type Row, type Step, may, run } from "./api";
import { useAnswer, whileAsked } from "./answers";
import { type Branch, type Line, parentOf, useTree } from "./branches";
import { Trouble, askFor, change, changeOrSay } from "./dialogs";
import { openCommand } from "./generic";
import { Icon } from "./icons";
import { sayCut } from "./people";
import { type Where, go } from "./place";
import { RecordView, Table } from "./table";
import { t, words } from "./texts";

/** The class number by which rights and the log know folders. */
const kFolderClass = "105";
const tabs = ["contents", "properties", "rights", "log"] as const;
/** Columns of a root that are changed here. */
const rootFields = ["name", "display_name", "description", "path", "max_size", "owner"];

interface Folder extends Branch {
    /** What it holds beside folders. */
    others: number;
}

const isRoot = (key: string) => key.startsWith("root:");
const argumentOf = (key: string) => key.replace("folder:", "id:");
const rootArgument = (key: string) => key.replace("root:", "id:");
const asText = (value: unknown) => (value === null || value === undefined ? "" : String(value));
const folderOf = (row: Row): Folder => ({
    key: `folder:${row["id"]}`,
    name: asText(row["name"]),
    children: Number(row["folders"] ?? 1),
    others: Number(row["other_objects"] ?? 0),
});

/** The folders that are in no root, as the top was last read. */
let unrooted: Folder[] = [];

/** The roots, and a place for the folders that are in none. */
async function readTop(): Promise<{ total: number; rows: Folder[] }> {
    const [roots, drawn] = await Promise.all([run("docroot/list", {}), run("folder/tree", { depth: 1 })]);
    const below = (id: unknown) =>
        (drawn.rows ?? []).filter(row => row["depth"] === 1 && row["type"] === "folder" && row["parent"] === id);
    unrooted = below(null).map(folderOf);
    const rows = (roots.rows ?? []).map(row => ({
        key: `root:${row["id"]}`,
        name: asText(row["name"]),
        // What is not in a long answer may be there all the same.
        children: drawn.cut ? 1 : below(row["id"]).length,
        others: 0,
    }));
    if (unrooted.length > 0) {
        rows.push({ key: "unrooted", name: t("documents.unrooted"), children: unrooted.length, others: 0 });
    }
    return { total: rows.length, rows };
}

async function read(parent: string): Promise<{ total: number; rows: Folder[] }> {
    if (parent === "") {
        return readTop();
    }
    const rows =
        parent === "unrooted"
            ? unrooted
            : ((await run("folder/list", { PATH: argumentOf(parent) })).rows ?? []).map(folderOf);
    return { total: rows.length, rows };
}

/** The way to a folder from its root. */
async function trailTo(key: string): Promise<Step[] | undefined> {
    const way: Step[] = [];
    for (const row of (await run("folder/tree", {})).rows ?? []) {
        const depth = Number(row["depth"]);
        way.splice(depth);
        const type = asText(row["type"]);
        way[depth] = { key: type === "nowhere" ? "unrooted" : `${type}:${row["id"]}`, name: asText(row["name"]) };
        if (way[depth]?.key === key) {
            return way;
        }
    }
    return undefined;
}

// ---- What is done ---------------------------------------------------------------------------------------------------

const askName = (title: string, value: string, action: string, onSubmit: (name: string) => Promise<boolean>) =>
    askFor(title, [{ name: "name", label: t("group.name"), value, required: true }], action, values =>
        onSubmit(values["name"] ?? ""),
    );
const create = (key: string, name: string, onDone: () => void) =>
    askName(t("group.under", { path: name }), "", t("create"), async folder => {
        const path = `${argumentOf(key)}/${folder.replace(/[\\/]/g, "\\$&")}`;
        const made = await change("folder/create", { PATH: path });
        made && onDone();
        return made !== null;
    });
const rename = (key: string, name: string) =>
    askName(
        t("group.rename", { path: name }),
        name,
        t("rename"),
        async to =>
            (await (isRoot(key)
                ? change("docroot/set", { ROOT: rootArgument(key), name: to })
                : change("folder/rename", { FOLDER: argumentOf(key), NAME: to }))) !== null,
    );
const link = (key: string, name: string) =>
    askFor(
        t("documents.linked", { name }),
        [{ name: "parent", label: t("documents.parent"), required: true }],
        t("ok"),
        async values =>
            (await change("folder/link", { FOLDER: argumentOf(key), PARENT: values["parent"] ?? "" })) !== null,
    );
/** The folder that is carried to another place, and the key of what it is shown under. */
let carried: { folder: Folder; from: string } | undefined;
const canDrop = (place: Folder | undefined) =>
    carried !== undefined &&
    place !== undefined &&
    place.key !== "unrooted" &&
    place.key !== carried.folder.key &&
    may("folder/move");
/** Asks, and puts what is carried into a place. @param isCopy  it stays where it is shown, too. */
function drop(place: Folder, isCopy: boolean): void {
    if (!carried || !canDrop(place)) {
        return;
    }
    const { folder, from } = carried;
    const values = { FOLDER: argumentOf(folder.key), PARENT: argumentOf(place.key) };
    const named = { name: folder.name, to: place.name };
    if (isCopy) {
        askFor(t("drop.link", named), [], t("ok"), async () => (await change("folder/link", values)) !== null);
    } else {
        askFor(
            t("drop.group", named),
            [],
            t("move"),
            async () =>
                (await change("folder/move", {
                    ...values,
                    ...(/^(root|folder):/.test(from) ? { from: argumentOf(from) } : {}),
                })) !== null,
        );
    }
}
const mayRename = (key: string) => may(isRoot(key) ? "docroot/set" : "folder/rename");
const mayRemove = (key: string) => may(isRoot(key) ? "docroot/delete" : "folder/delete");
const remove = (key: string, isFull: boolean) =>
    isRoot(key)
        ? changeOrSay("docroot/delete", { ROOT: rootArgument(key), recursive: isFull })
        : changeOrSay("folder/delete", { FOLDER: argumentOf(key), recursive: isFull });

/** What a root becomes, of which only what was touched is sent, and only if the root is as it was shown. */
const askProperties = (key: string, shown: Answer) => {
    const record = shown.record ?? {};
    const ROOT = rootArgument(key);
    askFor(
        t("documents.change"),
        rootFields.map(name => ({ name, label: words(name), value: asText(record[name]) })),
        t("save"),
        async values => {
            const touched = Object.entries(values).filter(([name, value]) => value !== asText(record[name]));
            return (
                touched.length === 0 ||
                (await change(
                    "docroot/set",
                    { ROOT, ...Object.fromEntries(touched) },
                    { if_unchanged: { command: "docroot/show", parameters: { ROOT }, version: shown.version ?? "" } },
                )) !== null
            );
        },
    );
};

// ---- What is shown --------------------------------------------------------------------------------------------------

function Contents(props: { at: string; onChoose: (key: string) => void }) {
    const { answer, trouble } = useAnswer("folder/list", { PATH: argumentOf(props.at) });
    return (
        <>
            <Trouble text={trouble} />
            {answer?.rows && (
                <Table
                    label={t("documents.contents")}
                    columns={["name", "folders", "other_objects"]}
                    rows={answer.rows}
                    action={row => (
                        <button class="link" onClick={() => props.onChoose(`folder:${row["id"]}`)}>
                            {t("generic.show")}
                        </button>
                    )}
                />
            )}
            {answer?.cut && <p>{t("generic.cut", { count: answer.rows?.length ?? 0 })}</p>}
        </>
    );
}

function Rights(props: { id: string; commands: Command[] }) {
    const { answer, trouble } = useAnswer("objright/list", { CLASS: kFolderClass, OBJECT: props.id });
    const open = (verb: string, label: string, values: Record<string, string>) => {
        const command = props.commands.find(one => one.path.join(" ") === `objright ${verb}`);
        return (
            command && (
                <button class={verb === "grant" ? "" : "link"} onClick={() => openCommand(command, values)}>
                    {label}
                </button>
            )
        );
    };
    return (
        <>
            <div class="bar">{open("grant", t("documents.grant"), { CLASS: kFolderClass, OBJECT: props.id })}</div>
            <Trouble text={trouble} />
            {answer?.rows && (
                <Table
                    label={t("documents.rights")}
                    columns={["holder", "genre", "function", "power", "unpower", "creator", "created"]}
                    rows={answer.rows}
                    action={row => (
                        <>
                            {open("set", t("documents.change"), {
                                ID: asText(row["id"]),
                                POWER: asText(row["power"]),
                                unpower: asText(row["unpower"]),
                            })}
                            {open("revoke", t("delete"), { ID: asText(row["id"]) })}
                        </>
                    )}
                />
            )}
        </>
    );
}

function Log(props: { id: string }) {
    const { answer, trouble } = useAnswer("doclog/list", { class: kFolderClass, object: props.id });
    return (
        <>
            <Trouble text={trouble} />
            {answer?.rows && (
                <Table label={t("documents.log")} columns={["type", "content", "creator", "genre"]} rows={answer.rows} />
            )}
        </>
    );
}

/** A root or folder. @param from  the key of what it is shown under, as far as that is known. */
function Place(props: {
    at: string;
    from: string;
    tab: string;
    commands: Command[];
    onShow: (changed: Record<string, string | undefined>) => void;
    onMade: () => void;
}) {
    const { at } = props;
    const { answer, trouble } = useAnswer(
        isRoot(at) ? "docroot/show" : "folder/show",
        isRoot(at) ? { ROOT: rootArgument(at) } : { FOLDER: argumentOf(at) },
    );
    const record = answer?.record;
    const name = asText(record?.["name"]);
    const id = at.slice(at.indexOf(":") + 1);
    const offered = isRoot(at) ? tabs.slice(0, 2) : tabs;
    const tab = offered.find(one => one === props.tab) ?? "contents";
    const isFull = isRoot(at) ? Number(record?.["links"]) > 0 : Number(record?.["folders"]) + Number(record?.["other_objects"]) > 0;
    const style = props.commands.find(command => command.path.join(" ") === "folder style");
    const contents: Record<(typeof tabs)[number], () => ComponentChildren> = {
        contents: () => <Contents key={at} at={at} onChoose={key => props.onShow({ at: key })} />,
        properties: () => record && <RecordView record={record} />,
        rights: () => <Rights key={at} id={id} commands={props.commands} />,
        log: () => <Log key={at} id={id} />,
    };
    return (
        <section class="panel" aria-label={t("documents.place")}>
            <header>
                <h2 dir="auto">{name}</h2>
                {!isRoot(at) && (
                    <span class="muted">
                        <bdi>{asText(record?.["path"])}</bdi>
                    </span>
                )}
            </header>
            <Trouble text={trouble} />
            {record && answer && (
                <>
                    <div class="bar" role="group" aria-label={t("generic.do")}>
                        {may("folder/create") && (
                            <button onClick={() => create(at, name, props.onMade)}>{t("documents.new")}</button>
                        )}
                        {isRoot(at) ? (
                            may("docroot/set") && (
                                <button onClick={() => askProperties(at, answer)}>{t("documents.change")}</button>
                            )
                        ) : (
                            <>
                                {may("folder/rename") && <button onClick={() => rename(at, name)}>{t("rename")}</button>}
                                {style && (
                                    <button onClick={() => openCommand(style, { FOLDER: argumentOf(at), N: asText(record["style"]) })}>
                                        {t("documents.style")}
                                    </button>
                                )}
                                {may("folder/link") && <button onClick={() => link(at, name)}>{t("documents.link")}</button>}
                                {may("folder/unlink") && /^(root|folder):/.test(props.from) && (
                                    <button
                                        onClick={() =>
                                            void changeOrSay("folder/unlink", {
                                                FOLDER: argumentOf(at),
                                                from: argumentOf(props.from),
                                            })
                                        }
                                    >
                                        {t("documents.unlink")}
                                    </button>
                                )}
                            </>
                        )}
                        {mayRemove(at) && (
                            <button
                                class="danger"
                                onClick={async () => {
                                    if (await remove(at, isFull)) {
                                        props.onShow({ at: undefined, tab: undefined });
                                    }
                                }}
                            >
                                {t("delete")}…
                            </button>
                        )}
                    </div>
                    <nav class="tabs" aria-label={t("documents.place")}>
                        {offered.map(one => (
                            <button key={one} aria-current={one === tab ? "page" : undefined} onClick={() => props.onShow({ tab: one })}>
                                {t(`documents.${one}`)}
                            </button>
                        ))}
                    </nav>
                    <div class="body">{contents[tab]()}</div>
                </>
            )}
        </section>
    );
}

export function Documents(props: { where: Where; commands: Command[] }) {
    const at = props.where.query["at"] ?? "";
    const [trail, setTrail] = useState<Step[]>();
    const show = (changed: Record<string, string | undefined>) =>
        void go(props.where.path, { ...props.where.query, ...changed });
    const tree = useTree<Folder>({
        id: "folders",
        label: t("documents.tree"),
        chosen: at,
        trail,
        read,
        icon: folder => (isRoot(folder.key) ? "documents" : "folder"),
        count: folder => folder.others,
        onChoose: folder => folder.key !== "unrooted" && show({ at: folder.key }),
        carrying: {
            isMovable: line => line.node?.key.startsWith("folder:") ?? false,
            carry: line => {
                carried = line?.node && { folder: line.node, from: parentOf(line) };
            },
            cut: line => sayCut(line.node?.name ?? ""),
            canDrop,
            drop,
        },
        onKey: (event, line) => {
            const key = line.node?.key ?? "unrooted";
            if (key !== "unrooted" && event.key === "F2" && mayRename(key)) {
                rename(key, line.node?.name ?? "");
                return true;
            }
            if (key !== "unrooted" && event.key === "Delete" && mayRemove(key)) {
                show({ at: key });
                void remove(key, line.node ? line.node.children + line.node.others > 0 : false);
                return true;
            }
            return false;
        },
    });
    // A place that a link leads to is shown in the tree.
    useEffect(() => {
        return at && !tree.chosen ? whileAsked(trailTo(at), setTrail, () => undefined) : undefined;
    }, [at]);
    const newRoot = props.commands.find(command => command.path.join(" ") === "docroot create");
    return (
        <div class="split">
            <section class="tree panel" aria-label={t("documents.tree")}>
                <header>
                    <h2>{t("documents.tree")}</h2>
                    {newRoot && (
                        <button class="icon" title={t("documents.newroot")} aria-label={t("documents.newroot")} onClick={() => openCommand(newRoot)}>
                            <Icon name="plus" />
                        </button>
                    )}
                </header>
                {tree.top <= 0 && <p class="empty">{t(tree.top === 0 ? "documents.none" : "loading")}</p>}
                {tree.view}
            </section>
            {at ? (
                <Place
                    key={at}
                    at={at}
                    from={tree.chosen ? parentOf(tree.chosen as Line<Branch>) : ""}
                    tab={props.where.query["tab"] ?? ""}
                    commands={props.commands}
                    onShow={show}
                    onMade={() => tree.chosen && tree.open(tree.chosen)}
                />
            ) : (
                <p class="empty">{t("documents.choose")}</p>
            )}
        </div>
    );
}
