// The notices of the board; the one that is chosen is shown beside them.
import { useState } from "preact/hooks";
import { type Row, may } from "./api";
import { useAnswer } from "./answers";
import { Trouble, changeOrSay } from "./dialogs";
import { Icon } from "./icons";
import { type Where, go } from "./place";
import { Scroller, steps } from "./scroller";
import { Table, shown } from "./table";
import { t, words } from "./texts";

const kLine = 30;
const columns = ["subject", "creator", "created"] as const;
const parts = [
    { name: "attachments", columns: ["file"] },
    { name: "replies", columns: ["creator", "created", "content"] },
    { name: "readers", columns: ["item", "name", "read", "flag"] },
];

const idOf = (row: Row) => String(row["id"]);
const remove = (ids: string[]) => changeOrSay("board/delete", { ID: ids });

function Notice(props: { id: string; onClose: () => void }) {
    const { answer, trouble } = useAnswer("board/show", { ID: props.id });
    const record = answer?.record;
    return (
        <section class="panel" aria-label={t("board.notice")}>
            <header>
                <h2 dir="auto">{String(record?.["subject"] ?? "")}</h2>
                <button class="icon" aria-label={t("close")} onClick={props.onClose}>
                    <Icon name="close" />
                </button>
            </header>
            <div class="body">
                <Trouble text={trouble} />
                {record && (
                    <>
                        <p class="muted">
                            <bdi>{record["creator"]}</bdi> · {shown("created", record["created"])}
                        </p>
                        <p class="letter" dir="auto">
                            {record["content"]}
                        </p>
                        {parts.map(part => (
                            <section key={part.name}>
                                <h3>{words(part.name)}</h3>
                                <Table label={words(part.name)} columns={part.columns} rows={answer?.parts?.[part.name] ?? []} />
                            </section>
                        ))}
                        {may("board/delete") && (
                            <div class="bar">
                                <button class="danger" onClick={async () => (await remove([props.id])) && props.onClose()}>
                                    {t("delete")}…
                                </button>
                            </div>
                        )}
                    </>
                )}
            </div>
        </section>
    );
}

export function Board(props: { where: Where }) {
    const { query } = props.where;
    const { answer, trouble } = useAnswer("board/list", {});
    const [active, setActive] = useState(0);
    const [selected, setSelected] = useState<ReadonlySet<string>>(new Set());
    const opened = query["notice"] ?? "";
    const part = (query["find"] ?? "").toLowerCase();
    const rows = (answer?.rows ?? []).filter(row =>
        columns.some(column => String(row[column] ?? "").toLowerCase().includes(part)),
    );
    // What is out of sight is not deleted.
    const chosen = rows.map(idOf).filter(id => selected.has(id));
    const show = (changed: Record<string, string | undefined>) => void go(props.where.path, { ...query, ...changed }, "replace");
    const select = (id: string, isOn: boolean) =>
        setSelected(before => new Set(isOn ? [...before, id] : [...before].filter(other => other !== id)));
    const onKey = (event: KeyboardEvent, page: number) => {
        const row = rows[active];
        if (!row || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        const actions: Record<string, () => void> = {
            ...steps(active, rows.length, page, setActive),
            Enter: () => show({ notice: idOf(row) }),
            " ": () => select(idOf(row), !selected.has(idOf(row))),
            Delete: () => may("board/delete") && void remove(chosen.length > 0 ? chosen : [idOf(row)]),
        };
        const action = actions[event.key];
        if (action) {
            event.preventDefault();
            action();
        }
    };
    return (
        <div class={`split wide${opened ? " with-sheet" : ""}`}>
            <section class="panel" aria-label={t("area.board")}>
                <div class="bar">
                    <input
                        type="search"
                        aria-label={t("board.find")}
                        placeholder={t("board.find")}
                        value={query["find"] ?? ""}
                        onInput={event => {
                            setActive(0);
                            show({ find: event.currentTarget.value });
                        }}
                    />
                    <span class="total" role="status">
                        {answer ? t("board.count", { count: rows.length }) : ""}
                    </span>
                    {chosen.length > 0 && may("board/delete") && (
                        <button class="danger" onClick={() => void remove(chosen)}>
                            {t("board.delete", { count: chosen.length })}
                        </button>
                    )}
                </div>
                <Trouble text={trouble} />
                {answer?.cut && <p>{t("generic.cut", { count: answer.rows?.length ?? 0 })}</p>}
                {answer && rows.length === 0 && <p class="empty">{t("none")}</p>}
                {rows.length > 0 && (
                    <Scroller
                        role="grid"
                        id="notices"
                        label={t("area.board")}
                        count={rows.length + 1}
                        lineHeight={kLine}
                        active={active + 1}
                        activeId={`notice-${active}`}
                        attributes={{ "aria-rowcount": rows.length + 1, "aria-multiselectable": true }}
                        onKey={onKey}
                        line={(index, style) => {
                            if (index === 0) {
                                return (
                                    <div key="head" class="row notice head" role="row" aria-rowindex={1} style={style}>
                                        <div class="cell" role="columnheader">
                                            <span class="hidden">{t("board.mark")}</span>
                                        </div>
                                        {columns.map(column => (
                                            <div key={column} class="cell" role="columnheader">
                                                {words(column)}
                                            </div>
                                        ))}
                                    </div>
                                );
                            }
                            const row = rows[index - 1] as Row;
                            const id = idOf(row);
                            return (
                                <div
                                    key={id}
                                    id={`notice-${index - 1}`}
                                    class={`row notice${index - 1 === active ? " active" : ""}${id === opened ? " opened" : ""}`}
                                    role="row"
                                    aria-rowindex={index + 1}
                                    aria-selected={selected.has(id)}
                                    style={style}
                                    onClick={() => {
                                        setActive(index - 1);
                                        show({ notice: id });
                                    }}
                                >
                                    <div class="cell" role="gridcell" onClick={event => event.stopPropagation()}>
                                        <input
                                            type="checkbox"
                                            tabIndex={-1}
                                            aria-label={t("people.select", { name: String(row["subject"] ?? id) })}
                                            checked={selected.has(id)}
                                            onChange={event => select(id, event.currentTarget.checked)}
                                        />
                                    </div>
                                    {columns.map(column => (
                                        <div key={column} class="cell" role="gridcell">
                                            {shown(column, row[column])}
                                        </div>
                                    ))}
                                </div>
                            );
                        }}
                    />
                )}
            </section>
            {opened && <Notice key={opened} id={opened} onClose={() => show({ notice: undefined })} />}
        </div>
    );
}
