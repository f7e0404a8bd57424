// Rows and records as they come.
import type { ComponentChildren } from "preact";
import type { Row, Value } from "./api";
import { number, t, time, words } from "./texts";

export function shown(name: string, value: Value | undefined): ComponentChildren {
    if (value === null || value === undefined) {
        return "";
    }
    if (typeof value === "boolean") {
        return value ? t("yes") : t("no");
    }
    if (typeof value === "number") {
        return name === "id" || name.endsWith("_id") || name === "entry" ? String(value) : number(value);
    }
    return <bdi>{name === "time" ? time(value) : value}</bdi>;
}

export function Table(props: { label: string; columns: string[]; rows: Row[]; action?: (row: Row) => ComponentChildren }) {
    if (props.rows.length === 0) {
        return <p class="empty">{t("none")}</p>;
    }
    return (
        <div class="table" role="region" aria-label={props.label} tabIndex={0}>
            <table>
                <thead>
                    <tr>
                        {props.columns.map(column => (
                            <th key={column} scope="col">
                                {words(column)}
                            </th>
                        ))}
                        {props.action && (
                            <th scope="col">
                                <span class="hidden">{t("generic.do")}</span>
                            </th>
                        )}
                    </tr>
                </thead>
                <tbody>
                    {props.rows.map((row, i) => (
                        <tr key={i}>
                            {props.columns.map(column => (
                                <td key={column} class={typeof row[column] === "number" ? "number" : ""}>
                                    {shown(column, row[column])}
                                </td>
                            ))}
                            {props.action && <td class="actions">{props.action(row)}</td>}
                        </tr>
                    ))}
                </tbody>
            </table>
        </div>
    );
}

export const RecordView = (props: { record: Row }) => (
    <dl class="record">
        {Object.entries(props.record).map(([name, value]) => (
            <div key={name}>
                <dt>{words(name)}</dt>
                <dd>{shown(name, value)}</dd>
            </div>
        ))}
    </dl>
);
